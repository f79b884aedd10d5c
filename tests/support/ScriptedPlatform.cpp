#include "support/ScriptedPlatform.h"

ScriptedPlatform::ScriptedPlatform() {
    setPlatform(this);
}

ScriptedPlatform::~ScriptedPlatform() { setPlatform(nullptr); }

QStringList ScriptedPlatform::boxTexts() const {
    QStringList texts;
    for (const ShownBox& box : boxes)
        texts << box.text;
    return texts;
}

MsgAnswer ScriptedPlatform::messageBox(const QString& text, MsgIcon icon, const QString& title,
                                       MsgButtons buttons) {
    boxes.append({text, icon, title, buttons});
    if (onBox)
        onBox(boxes.last());
    if (!boxAnswers.isEmpty())
        return boxAnswers.dequeue();
    switch (buttons) {
    case MsgButtons::Ok:
    case MsgButtons::OkCancel: return MsgAnswer::Ok;
    case MsgButtons::YesNo:
    case MsgButtons::YesNoCancel: return MsgAnswer::Yes;
    case MsgButtons::RetryCancel: return MsgAnswer::Retry;
    }
    return MsgAnswer::Ok;
}

QString ScriptedPlatform::chooseFolder(QObject*, const QString& title) {
    chooserTitles.append(title);
    return chooserAnswers.isEmpty() ? QString() : chooserAnswers.dequeue();
}

QString ScriptedPlatform::prompt(const QString& text, const QString&, const QString&) {
    prompts.append(text);
    return promptAnswers.isEmpty() ? QString() : promptAnswers.dequeue();
}

bool ScriptedPlatform::openAddress(const QString& address) {
    openedAddresses.append(address);
    return !openAddressFails;
}

QString ScriptedPlatform::getSetting(const QString& section, const QString& key, const QString& defaultValue) {
    return settings.value(section + u'/' + key, defaultValue);
}

void ScriptedPlatform::saveSetting(const QString& section, const QString& key, const QString& value) {
    settings.insert(section + u'/' + key, value);
}
