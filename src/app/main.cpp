// Brindlemark v6: the main window is the start object; nothing runs before it.
#include "frame/Platform.h"
#include "frame/main/MainWindow.h"
#include "frame/ui/ProgramIcon.h"
#include "frame/ui/QtPlatform.h"
#include "store/ui/ReadProgressWindow.h"

#include <QApplication>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Brindlemark"));
    QApplication::setApplicationName(ProgramTitle);
    QApplication::setWindowIcon(ProgramIcon());

    QtPlatform services;
    setPlatform(&services);
    // Long reads of a sheet or a chart show the store's progress window.
    UseReadProgressWindow();

    int result = 0;
    {
        MainWindow frame;
        frame.show();
        result = QApplication::exec();
    }
    setPlatform(nullptr);
    return result;
}
