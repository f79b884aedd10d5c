#include "frame/main/ProgramStart.h"

#include "frame/Platform.h"
#include "frame/main/MainWindow.h"
#include "frame/ui/ProgramIcon.h"
#include "store/ReadProgress.h"
#include "store/ui/ReadProgressWindow.h"

#include <QApplication>

std::unique_ptr<MainWindow> startProgram(Platform& services) {
    QApplication::setOrganizationName(QStringLiteral("Brindlemark"));
    QApplication::setApplicationName(ProgramTitle);
    QApplication::setWindowIcon(ProgramIcon());
    setPlatform(&services);
    UseReadProgressWindow();
    auto frame = std::make_unique<MainWindow>();
    frame->show();
    return frame;
}

void endProgram() {
    ReadProgress::setFactory({});
    setPlatform(nullptr);
}
