#pragma once
// The services the program takes from the platform: message boxes, the folder chooser, a text
// prompt, opening an address in the browser, today's date, ending the program, the program's own
// folder, the per-user folders and the settings store. The Qt implementation lives in ui_frame
// (QtPlatform); tests install a scripted one. Everything in the program reaches these services
// through platform().

#include <QDate>
#include <QString>

class QObject;

enum class MsgIcon { None, Information, Warning, Critical, Question };
enum class MsgButtons { Ok, OkCancel, YesNo, YesNoCancel, RetryCancel };
enum class MsgAnswer { Ok, Cancel, Yes, No, Retry };

class Platform {
public:
    virtual ~Platform() = default;

    // Shows a modal message box and returns the button pressed. `title` is never empty here:
    // MsgBox() puts in the program's title for a box without a title of its own.
    virtual MsgAnswer messageBox(const QString& text, MsgIcon icon, const QString& title,
                                 MsgButtons buttons) = 0;
    // The system's folder chooser with `title` as its heading; empty text when cancelled.
    // The path comes back with native separators as the chooser gives it.
    virtual QString chooseFolder(QObject* owner, const QString& title) = 0;
    // A modal text prompt; empty text when cancelled.
    virtual QString prompt(const QString& text, const QString& title, const QString& defaultText) = 0;
    // Asks the system to open the address in its default handler; false when the call itself failed.
    virtual bool openAddress(const QString& address) = 0;
    virtual QDate today() = 0;
    // Ends the program at once with all its windows.
    virtual void quit() = 0;
    // The folder of the executable.
    virtual QString programFolder() = 0;
    // The per-user data folder, used for the program's own files when programFolder() is not writable.
    virtual QString userDataFolder() = 0;
    // The per-user cache folder: files the program keeps for itself (the trace of the last reply,
    // downloaded archives), never shared by two users of one machine.
    virtual QString cacheFolder() = 0;
    // The per-user settings store: application "Brindlemark v6", by section and key.
    virtual QString getSetting(const QString& section, const QString& key, const QString& defaultValue) = 0;
    virtual void saveSetting(const QString& section, const QString& key, const QString& value) = 0;
};

// The program's title: caption of the main window, application name of the settings store and
// title of every message box that has none of its own.
inline const QString ProgramTitle = QStringLiteral("Brindlemark v6");

Platform& platform();
// Installs the platform services; the caller keeps ownership. Passing nullptr removes them.
void setPlatform(Platform* services);
// The services installed, or nullptr when there are none.
Platform* installedPlatform();

// A message box as the program's screens show it: a box without a title shows the program's title.
MsgAnswer MsgBox(const QString& text, MsgIcon icon = MsgIcon::None, const QString& title = {},
                 MsgButtons buttons = MsgButtons::Ok);

// Where a file of the program's own ("symbols.csv", "folders.txt") is read from: where the
// program writes it, when it is there (see below), else the program's folder, else
// share/brindlemark beside the program's folder (an installed program).
QString ownFileForReading(const QString& name);
// Where such a file is written: the program's folder when it is writable, else the per-user
// data folder (made when missing).
QString ownFileForWriting(const QString& name);
