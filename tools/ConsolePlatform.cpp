#include "ConsolePlatform.h"

MsgAnswer ConsolePlatform::messageBox(const QString& text, MsgIcon, const QString&, MsgButtons buttons) {
    if (!text.endsWith(QLatin1String("Completed.")))
        err_ << text << '\n';
    switch (buttons) {
    case MsgButtons::YesNo:
    case MsgButtons::YesNoCancel: return MsgAnswer::Yes;
    case MsgButtons::RetryCancel: return MsgAnswer::Cancel;
    default: return MsgAnswer::Ok;
    }
}
