#include "DownloadFolders.h"

#include "support/Modal.h"

#include "store/SecurityReader.h"
#include "store/SecurityWriter.h"

#include <QPushButton>
#include <QTimer>

#include <gtest/gtest.h>

#include <memory>

void makeSecurity(const QString& folder, const QString& symbol, const QString& name,
                  const QList<StoredBar>& bars) {
    SecurityWriter writer;
    writer.OpenFolder(folder);
    writer.CreateSecurity(symbol, name, 1);
    for (const StoredBar& b : bars)
        writer.AddQuote(b.date, 0, b.open, b.high, b.low, b.close, b.volume, 0.0);
    writer.SaveQuotes();
    writer.CloseSecurity();
    writer.CloseFolder();
}

QList<StoredBar> storedBars(const QString& folder, const QString& symbol) {
    SecurityReader reader;
    reader.OpenFolder(folder);
    reader.OpenSecurity(symbol);
    QList<StoredBar> bars;
    while (reader.GetRecordsRemaining() >= 1) {
        reader.NextRecord();
        bars.append({reader.GetDate(), reader.GetOpen(), reader.GetHigh(), reader.GetLow(),
                     reader.GetClose(), reader.GetVolume()});
    }
    reader.CloseSecurity();
    reader.CloseFolder();
    return bars;
}

StoredBar bar(qint32 date, double price, double volume) {
    return {date, price, price + 1, price - 1, price + 0.5, volume};
}

void closeProgressWhenDone(std::function<void(QWidget*)> inspect) {
    onNextModal([inspect](QWidget* modal) {
        auto* button = child<QPushButton>(modal, "Command1");
        if (!button)
            return;
        auto* poll = new QTimer;
        auto tries = std::make_shared<int>(0);
        QObject::connect(poll, &QTimer::timeout, [poll, tries, button, modal, inspect] {
            if (button->text() != "&Close" && ++*tries < 1000)
                return;
            poll->stop();
            poll->deleteLater();
            EXPECT_EQ(button->text(), "&Close") << "the run did not end";
            inspect(modal);
            button->click();
        });
        poll->start(10);
    });
}
