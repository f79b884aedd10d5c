#pragma once
// Child windows (data sheets, charts, the CSV conversion) go into the main window's MDI area.
// Without a main window (tests, a screen run on its own) they stand as top-level windows.

class QWidget;
class QMdiArea;

// Shows `window` as a child window of the main window, wholly inside its area and cascaded from
// the windows already open; the window is deleted when it closes.
void ShowChildWindow(QWidget* window);
// The area child windows go into; the main window installs its own, nullptr removes it.
void SetChildWindowArea(QMdiArea* area);
QMdiArea* ChildWindowArea();
