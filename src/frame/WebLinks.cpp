#include "frame/WebLinks.h"

#include "frame/Failure.h"
#include "frame/Platform.h"

void GoURL(const QString& address) {
    try {
        if (address.isEmpty())
            throw Failure(FailureNumber::EmptyAddress, QStringLiteral("No address to open"));
        if (!platform().openAddress(address))
            throw Failure(FailureNumber::Generic, QStringLiteral("The system could not open the address"));
    } catch (const Failure&) {
        MsgBox(QStringLiteral("Could not open URL \n") + address, MsgIcon::Critical, QStringLiteral("Hyperlink"));
    }
}
