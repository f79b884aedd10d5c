// Brindlemark v6: the main window is the start object; nothing runs before it.
#include "frame/main/MainWindow.h"
#include "frame/main/ProgramStart.h"
#include "frame/ui/QtPlatform.h"

#include <QApplication>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QtPlatform services;
    int result = 0;
    {
        const auto frame = startProgram(services);
        result = QApplication::exec();
    }
    endProgram();
    return result;
}
