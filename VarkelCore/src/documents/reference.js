// Search: every word must occur in a row or a command; groups and sections without rows are hidden.
(() => {
  const search = document.getElementById("search");
  const found = document.getElementById("found");
  const nothing = document.getElementById("nothing");
  const items = [...document.querySelectorAll(".item")].map(
    (element) => ({ element, text: element.textContent.toLowerCase() }));
  const containers = [...document.querySelectorAll(".group, section")];

  const show = () => {
    const words = search.value.toLowerCase().split(/\s+/).filter(Boolean);
    let count = 0;
    for (const { element, text } of items) {
      element.hidden = !words.every((word) => text.includes(word));
      if (!element.hidden) count += 1;
    }
    for (const container of containers) container.hidden = !container.querySelector(".item:not([hidden])");
    nothing.hidden = count > 0;
    found.textContent = words.length === 0 ? "" : count === 1 ? "1 match" : `${count} matches`;
  };

  search.addEventListener("input", show);
  // Following a link to a hidden part shows everything again.
  window.addEventListener("hashchange", () => {
    const target = document.getElementById(location.hash.slice(1));
    if (!target || !target.closest("[hidden]")) return;
    search.value = "";
    show();
    target.scrollIntoView();
  });
  show();
})();
