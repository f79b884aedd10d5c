#pragma once
// The four web pages the program leaves to the system's browser.

#include <QString>

namespace WebLinks {
inline const QString HelpPage = QStringLiteral("https://www.brindlemark.net/help/v6/");
inline const QString ProductPage = QStringLiteral("https://www.brindlemark.net/download/");
inline const QString YahooLookupPage = QStringLiteral("https://finance.yahoo.com/lookup");
inline const QString MakerHomePage = QStringLiteral("https://www.brindlemark.net/");

inline const QString MakerLine = QStringLiteral("Brindlemark Software, Pune, India");
inline const QString MakerEmail = QStringLiteral("support@brindlemark.net");
}

// Asks the system to open the address and returns at once; the system's answer is not looked at.
// An empty address or a failing call shows "Could not open URL " and the address.
void GoURL(const QString& address);
