#pragma once
// The dialogs stand in the middle of the screen: left = (screen width - window width) / 2,
// top = (screen height - window height) / 2, the window measured with its frame.

class QWidget;

void CentreOnScreen(QWidget* window);
