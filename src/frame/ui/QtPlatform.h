#pragma once
// The platform services of the running program: message boxes, the folder chooser, the text
// prompt, the desktop's browser and the application's exit through Qt's widgets; the clock, the
// folders and the settings store as the system gives them.

#include "frame/SystemPlatform.h"

class QtPlatform : public SystemPlatform {
public:
    MsgAnswer messageBox(const QString& text, MsgIcon icon, const QString& title,
                         MsgButtons buttons) override;
    QString chooseFolder(QObject* owner, const QString& title) override;
    QString prompt(const QString& text, const QString& title, const QString& defaultText) override;
    bool openAddress(const QString& address) override;
    void quit() override;
};
