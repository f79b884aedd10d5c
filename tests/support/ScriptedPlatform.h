#pragma once
// The platform services as a test scripts them: every message box, chooser and prompt is recorded,
// and answered from a queue the test fills ("the next box answers Yes", "the chooser returns
// /tmp/x"). With the queue empty a box answers with its first button, a chooser and a prompt
// are cancelled. Settings live in memory; today is fixed by the test.
//
// Constructing one installs it (setPlatform) together with a fresh program state (the shared
// state and the hand-overs between screens); destroying it uninstalls both.

#include "frame/Platform.h"
#include "frame/ProgramState.h"

#include <QDir>
#include <QMap>
#include <QQueue>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>

struct ShownBox {
    QString text;
    MsgIcon icon;
    QString title;
    MsgButtons buttons;
};

class ScriptedPlatform : public Platform {
public:
    ScriptedPlatform();
    ~ScriptedPlatform() override;

    // --- scripting ---
    void answerNextBox(MsgAnswer answer) { boxAnswers.enqueue(answer); }
    void chooseNext(const QString& folder) { chooserAnswers.enqueue(folder); }
    void typeNext(const QString& text) { promptAnswers.enqueue(text); }
    // Runs while a box is up (a modal box stops the caller; this is what "the user" does meanwhile).
    std::function<void(const ShownBox&)> onBox;

    // --- what was shown ---
    QList<ShownBox> boxes;
    QStringList chooserTitles;
    QStringList prompts;
    QStringList openedAddresses;
    bool openAddressFails = false;

    int quits = 0;                     // times the program was ended
    QDate todayDate{2026, 11, 23};
    QMap<QString, QString> settings;   // "Section/Key" -> value
    QTemporaryDir programDir;          // the program's own folder, empty at start
    QString programPath;               // when set, the program's folder in place of programDir
    QTemporaryDir userDir;             // the per-user data folder
    QTemporaryDir cacheDir;            // the per-user cache folder
    ProgramState state;                // what the screens share and hand over, fresh for each test

    // The texts of all boxes shown, in order.
    QStringList boxTexts() const;

    // --- Platform ---
    MsgAnswer messageBox(const QString& text, MsgIcon icon, const QString& title, MsgButtons buttons) override;
    QString chooseFolder(QObject* owner, const QString& title) override;
    QString prompt(const QString& text, const QString& title, const QString& defaultText) override;
    bool openAddress(const QString& address) override;
    QDate today() override { return todayDate; }
    void quit() override { ++quits; }
    QString programFolder() override { return programPath.isEmpty() ? programDir.path() : programPath; }
    QString userDataFolder() override { return userDir.path(); }
    QString cacheFolder() override { return cacheDir.path(); }
    QString getSetting(const QString& section, const QString& key, const QString& defaultValue) override;
    void saveSetting(const QString& section, const QString& key, const QString& value) override;

private:
    QQueue<MsgAnswer> boxAnswers;
    QQueue<QString> chooserAnswers;
    QQueue<QString> promptAnswers;
};
