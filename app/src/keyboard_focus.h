#pragma once

class QWindow;

/// Hands the keyboard on to `view` whenever `window`, which contains it, gets it, for as long as `view`
/// lives.
///
/// A window manager gives the keyboard to the outer window: on each click, and when the user comes back from
/// another window. Qt asks for it in turn for an embedded window on a click alone, and not even then if the
/// click and the change of the focus arrive together, since it compares with the focus from before both.
void PassKeyboardOn(QWindow& window, QWindow& view);
