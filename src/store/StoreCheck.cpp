#include "store/StoreCheck.h"

#include "frame/Failure.h"
#include "store/StoreFiles.h"
#include "store/StoreFolder.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSet>

using namespace metastock;

namespace StoreCheck {

namespace {

void problem(std::vector<Finding>& out, const QString& text) { out.push_back({true, text}); }
void note(std::vector<Finding>& out, const QString& text) { out.push_back({false, text}); }

QString dateText(qint32 d) { return QString::number(d); }

// "1 record", "3 records".
QString counted(int n, const char* one, const char* many) {
    return QString::number(n) + u' ' + QLatin1String(n == 1 ? one : many);
}

void checkRecords(std::vector<Finding>& out, const Folder& folder, const Security& s) {
    const QString file = s.dataFileName();
    const QString path = folder.dataPath(s);
    const QString who = QStringLiteral("%1 (%2)").arg(file, s.key());
    if (!QFileInfo(path).isFile()) {
        problem(out, QStringLiteral("%1: the data file is missing").arg(who));
        return;
    }
    QByteArray bytes;
    std::vector<Record> records;
    const Layout layout = s.layout();
    try {
        bytes = StoreFiles::readAll(path, maxDataSize(layout));
        records = parseData(bytes, layout, file);
    } catch (const Failure& f) {
        problem(out, QStringLiteral("%1: %2").arg(who, f.Description));
        return;
    }
    const qint64 used = qint64(records.size() + 1) * layout.recordLength();
    if (bytes.size() > used)
        note(out, QStringLiteral("%1: %2 bytes past the last counted record").arg(who).arg(bytes.size() - used));

    int badDates = 0, outOfOrder = 0, doubled = 0;
    qint32 firstBad = 0;
    for (size_t i = 0; i < records.size(); ++i) {
        const Record& r = records[i];
        if (!isValidStoreDate(r.date)) {
            if (badDates++ == 0)
                firstBad = r.date;
        }
        if (i == 0)
            continue;
        const Record& p = records[i - 1];
        const bool same = r.date == p.date && (!layout.time || r.time == p.time);
        const bool before = r.date < p.date || (layout.time && r.date == p.date && r.time < p.time);
        if (same)
            ++doubled;
        else if (before)
            ++outOfOrder;
    }
    if (badDates > 0)
        problem(out, QStringLiteral("%1: %2 (first: %3)")
                         .arg(who, counted(badDates, "record with a date that names no day", "records with a date that names no day"))
                         .arg(firstBad));
    if (outOfOrder > 0)
        problem(out, who + QStringLiteral(": ") + counted(outOfOrder, "record comes before the record ahead of it",
                                                           "records come before the record ahead of them"));
    if (doubled > 0)
        problem(out, who + QStringLiteral(": ") + counted(doubled, "record repeats the date of the record ahead of it",
                                                           "records repeat the date of the record ahead of them"));

    if (!records.empty()) {
        const DataSummary sum = summaryOf(records, layout.time);
        if (sum.firstDate != s.firstDate || sum.lastDate != s.lastDate)
            note(out, QStringLiteral("%1: the index gives %2 to %3, the records run from %4 to %5")
                          .arg(who, dateText(s.firstDate), dateText(s.lastDate), dateText(sum.firstDate),
                               dateText(sum.lastDate)));
    }
}

} // namespace

std::vector<Finding> checkFolder(const QString& folderPath) {
    std::vector<Finding> out;
    Folder folder;
    try {
        folder = Folder::open(folderPath, true);
    } catch (const Failure& f) {
        problem(out, f.Description);
        return out;
    }
    const Index& index = folder.index;

    // Index files.
    const qint64 masterSize = StoreFiles::stamp(folder.filePath(QStringLiteral("MASTER"))).size;
    const qint64 masterUsed = qint64(index.masterCount() + 1) * MasterRecordLength;
    if (masterSize > masterUsed)
        note(out, QStringLiteral("MASTER: %1 bytes past its last security record").arg(masterSize - masterUsed));
    if (index.foreignXmaster)
        note(out, QStringLiteral("XMASTER: the file is not an index file and is left alone"));
    if (index.hasEmaster) {
        for (const Security& s : index.securities)
            if (!s.extended && s.emasterRaw.isEmpty())
                note(out, QStringLiteral("EMASTER: no record for %1").arg(s.dataFileName()));
        const int ecount = int(quint8(index.emasterHeader[0]) | (quint8(index.emasterHeader[1]) << 8));
        if (ecount != index.masterCount())
            note(out, QStringLiteral("EMASTER: %1, MASTER %2").arg(counted(ecount, "record", "records")).arg(index.masterCount()));
    }

    QHash<QString, QString> symbols;
    for (const Security& s : index.securities) {
        if (s.symbol.isEmpty())
            note(out, QStringLiteral("%1: the security \"%2\" has no symbol and goes by its name").arg(s.dataFileName(), s.name));
        const QString key = s.key().toUpper();
        if (symbols.contains(key))
            problem(out, QStringLiteral("%1: the symbol %2 is also the symbol of %3")
                             .arg(s.dataFileName(), s.key(), symbols.value(key)));
        else
            symbols.insert(key, s.dataFileName());
    }

    // Data files.
    QSet<QString> listed;
    for (const Security& s : index.securities) {
        listed.insert(s.dataFileName().toUpper());
        checkRecords(out, folder, s);
    }
    static const QRegularExpression dataName(QStringLiteral("^F[0-9]+\\.(DAT|MWD)$"),
                                             QRegularExpression::CaseInsensitiveOption);
    const QStringList entries = QDir(folder.path).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    for (const QString& name : entries) {
        if (dataName.match(name).hasMatch() && !listed.contains(name.toUpper()))
            note(out, QStringLiteral("%1: no security of the index uses this file").arg(name));
        else if (name.endsWith(QLatin1String(StoreFiles::TemporarySuffix), Qt::CaseInsensitive))
            note(out, QStringLiteral("%1: a temporary file left by a write that did not finish").arg(name));
        else if (name.startsWith(QLatin1String(".bm-")) && name.endsWith(QLatin1String(".part")))
            note(out, QStringLiteral("%1: a temporary file left by an unpacking that did not finish").arg(name));
    }
    return out;
}

} // namespace StoreCheck
