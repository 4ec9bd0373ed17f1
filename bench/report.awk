# Joins figures ("name<tab>number") and rows (see rows.tsv) into a Markdown table.

function text(number) {
  return sprintf(number >= 100 ? "%.0f" : number >= 10 ? "%.1f" : "%.2f", number)
}

function row(cells) {
  print "| " cells " |"
}

# "0,64,1024" -> "0 / 64 / 1024"
function listed(names,    count, i, part, line) {
  count = split(names, part, ",")
  for (i = 1; i <= count; ++i) line = line (i > 1 ? " / " : "") part[i]
  return line
}

function growth(what, unit, names, sizes,    count, i, name, line) {
  count = split(names, name, ",")
  for (i = 1; i <= count; ++i) {
    if (!(name[i] in figure)) return missing_figure(what, name[i])
    line = line (i > 1 ? " / " : "") text(figure[name[i]])
  }
  row(what " | " line " " unit " | at " listed(sizes) " | × " text(figure[name[count]] / figure[name[1]]) " | – | –")
}

function missing_figure(what, name) {
  if (!all) return
  row(what " | not measured | " name " | | | no")
  missing = 1
}

BEGIN {
  FS = "\t"
  sign["ratio"] = "× "
  sign["faster"] = "÷ "
  sign["more"] = "+ "
}
NR == FNR { figure[$1] = $2; next }
/^#/ || NF == 0 { next }
!heading++ {
  row("What | Figure | Reference | Ratio | Target | Met")
  row("--- | --- | --- | --- | --- | ---")
}
$5 == "growth" { growth($1, $2, $3, $4); next }
!($3 in figure) { missing_figure($1, $3); next }
$4 != "-" && !($4 in figure) { missing_figure($1, $4); next }
{
  value = figure[$3]
  shown = "–"
  if ($5 ~ /^ratio/) { value /= figure[$4]; shown = "× " text(value) }
  if ($5 ~ /^faster/) { value = figure[$4] / value; shown = "÷ " text(value) }
  if ($5 ~ /^more/) { value -= figure[$4]; shown = (value < 0 ? "− " text(-value) : "+ " text(value)) " " $2 }
  met = target = "–"
  if (split($5, rule, /[<>]=/) == 2) {
    met = (index($5, "<") ? value <= rule[2] + 0 : value >= rule[2] + 0) ? "yes" : "no"
    target = sign[rule[1]] (index($5, "<") ? "≤ " : "≥ ") rule[2]
  }
  row($1 " | " text(figure[$3]) " " $2 " | " ($4 == "-" ? "–" : text(figure[$4]) " " $2) " | " shown " | " target " | " met)
}
END { exit missing }
