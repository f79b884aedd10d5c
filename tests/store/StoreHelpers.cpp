#include "StoreHelpers.h"

#include "frame/Failure.h"
#include "frame/Regional.h"
#include "support/TestSupport.h"

#include <QDirIterator>
#include <QFile>

std::vector<Listed> listFolder(const QString& folder) {
    SecurityReader r;
    r.OpenFolder(folder);
    std::vector<Listed> out;
    while (r.GetSecuritiesRemaining() > 0) {
        r.NextSecurity();
        out.push_back({r.GetSymbol(), r.GetName(), r.GetFileName(), r.GetFirstDate(), r.GetLastDate()});
    }
    return out;
}

void addBars(SecurityWriter& writer, const std::vector<Bar>& bars) {
    for (const Bar& b : bars)
        writer.AddQuote(b.date, 0, b.open, b.high, b.low, b.close, b.volume, 0.0);
    writer.SaveQuotes();
}

Bar barOf(qint32 date, double base) {
    // Quarters and whole numbers only, so that the values are exact in a float.
    const double d = (date % 100) * 0.25 + ((date / 100) % 100) * 8;
    return {date, base + d, base + d + 2, base + d - 1, base + d + 1, 1000.0 + (date % 1000)};
}

std::vector<Bar> barsOf(const std::vector<qint32>& dates, double base) {
    std::vector<Bar> out;
    for (qint32 d : dates)
        out.push_back(barOf(d, base));
    return out;
}

std::vector<qint32> tradingDays(qint32 from, int count) {
    std::vector<qint32> out;
    QDate day = Regional::fromStoreDate(from);
    while (int(out.size()) < count) {
        if (day.dayOfWeek() <= 5)
            out.push_back(Regional::toStoreDate(day));
        day = day.addDays(1);
    }
    return out;
}

void writeFolder(const QString& folder, const std::function<void(SecurityWriter&)>& change) {
    SecurityWriter w;
    w.OpenFolder(folder);
    change(w);
    w.CloseFolder();
}

void makeSecurity(const QString& folder, const QString& symbol, const std::vector<qint32>& dates, double base) {
    makeSecurity(folder, symbol, symbol, barsOf(dates, base));
}

std::map<QString, QByteArray> snapshot(const QString& folder) {
    std::map<QString, QByteArray> out;
    QDirIterator it(folder, QDir::Files);
    while (it.hasNext()) {
        it.next();
        // A link stands for where it leads (it may lead to an endless device).
        out[it.fileName()] = it.fileInfo().isSymLink() ? "link to " + it.fileInfo().symLinkTarget().toUtf8()
                                                        : readFileBytes(it.filePath());
    }
    return out;
}

void copyFolder(const QString& from, const QString& to) {
    QDirIterator it(from, QDir::Files);
    while (it.hasNext()) {
        it.next();
        QFile::copy(it.filePath(), QDir(to).filePath(it.fileName()));
    }
}

std::string failureText(const std::function<void()>& step) {
    try {
        step();
    } catch (const Failure& f) {
        return f.Description.toStdString();
    }
    return "(no failure)";
}

void createEmpty(SecurityWriter& writer, const QString& symbol, qint32 seedDate) {
    if (writer.SymbolExists(symbol))
        writer.DeleteSecurity(symbol);
    writer.CreateSecurity(symbol, symbol, 1);
    writer.AddQuote(seedDate, 0, 0, 0, 0, 0, 0, 0);
    writer.DeleteQuote(QString::number(seedDate));
    writer.CloseSecurity();
}
