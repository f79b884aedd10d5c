#pragma once
// The program's start and end around its wait for the user: main() runs them, and so can a test.

#include <memory>

class MainWindow;
class Platform;

// Names the program and gives it its icon, installs `services` as the platform and the store's
// progress window for long reads, and shows the main window.
std::unique_ptr<MainWindow> startProgram(Platform& services);
// Takes back what startProgram installed, once the main window is gone.
void endProgram();
