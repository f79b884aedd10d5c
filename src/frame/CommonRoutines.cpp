#include "frame/CommonRoutines.h"

#include "frame/Failure.h"
#include "frame/ProgramState.h"
#include "frame/Platform.h"
#include "frame/Regional.h"

#include <QFile>
#include <QStringDecoder>

#include <cmath>

QString BrowseForFolder(QObject* owner, const QString& title) {
    QString path = platform().chooseFolder(owner, title);
    if (path.isEmpty())
        return {};
    if (const qsizetype nul = path.indexOf(QChar(u'\0')); nul >= 0)
        path.truncate(nul);
    if (path.endsWith(u'\\'))
        path.chop(1);
    else if (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    return path;
}

QString GetDateSeparator() { return Regional::dateSeparator(); }

QString GetShortDatePattern() { return Regional::shortDatePattern(); }

QString DateToText(qint32 storeDate) {
    if (storeDate == 0)
        return QStringLiteral("N/A");

    // Both divisions are floating and round to the nearest whole number (halves to even), which
    // for a valid date is the same as dropping the last two digits.
    const qint64 day = storeDate % 100;
    const auto rest = static_cast<qint64>(std::nearbyint(storeDate / 100.0));
    const qint64 month = rest % 100;
    const auto year = static_cast<qint64>(std::nearbyint(static_cast<double>(rest) / 100.0));

    const QString sep = GetDateSeparator();
    const QString pattern = GetShortDatePattern();

    // The fields go in the order in which the pattern has them round its separators; the pattern
    // itself then decides about leading zeros, month names and two-digit years.
    QString text;
    auto field = [&](qsizetype pos) {   // pos counts from 1
        if (pos < 1 || pos > pattern.size())
            return;
        const QChar c = pattern.at(pos - 1).toLower();
        if (c == u'd')
            text += QString::number(day) + sep;
        else if (c == u'm')
            text += QString::number(month) + sep;
        else if (c == u'y')
            text += QString::number(year) + sep;
    };

    if (!sep.isEmpty()) {
        qsizetype pos = pattern.indexOf(sep) + 1;
        field(pos - 1);
        while (pos > 0) {
            const qsizetype next = pattern.indexOf(sep, pos);   // searching from pos + 1 (1-based)
            if (next < 0)
                break;
            pos = next + 1;
            field(pos - 1);
            field(pos + 1);
        }
        text.chop(1);
    }

    if (const auto date = Regional::readDate(text))
        return Regional::dateText(*date);
    // A pattern whose separators do not stand between all three fields ("d. M. yyyy", a pattern
    // without any separator) leaves the fields incomplete: the date is written with the pattern
    // straight away.
    if (const QDate date = Regional::fromStoreDate(storeDate); date.isValid())
        return Regional::dateText(date);
    return text;
}

QString MonthAbbreviation(qint16 month) {
    static const char* const names[] = {"JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                                        "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};
    if (month < 1 || month > 12)
        return {};
    return QString::fromLatin1(names[month - 1]);
}

namespace {

// Reads comma-separated items one at a time, as a stream: an item may stand in double quotes and
// then hold commas (and "" for a quote); a comma or a line end ends an item. Blank lines hold no item.
class ItemReader {
public:
    explicit ItemReader(QString text) : text_(std::move(text)) {
        if (text_.startsWith(QChar(0xFEFF)))   // a byte-order mark left by an editor
            text_.remove(0, 1);
        skipBlankLines();
    }

    bool atEnd() const { return pos_ >= text_.size(); }

    // The next item, trimmed; a failure past the end of the text.
    QString next() {
        if (atEnd())
            throw Failure(FailureNumber::PastEndOfFile, QStringLiteral("Input past end of file"));
        QString item;
        while (pos_ < text_.size() && (text_[pos_] == u' ' || text_[pos_] == u'\t'))
            ++pos_;
        if (pos_ < text_.size() && text_[pos_] == u'"') {
            ++pos_;
            while (pos_ < text_.size()) {
                const QChar c = text_[pos_++];
                if (c == u'"') {
                    if (pos_ < text_.size() && text_[pos_] == u'"') {
                        item += u'"';
                        ++pos_;
                        continue;
                    }
                    break;
                }
                item += c;
            }
            // Anything between the closing quote and the delimiter is dropped.
            while (pos_ < text_.size() && !isDelimiter(text_[pos_]))
                ++pos_;
        } else {
            while (pos_ < text_.size() && !isDelimiter(text_[pos_]))
                item += text_[pos_++];
        }
        endItem();
        return item.trimmed();
    }

private:
    static bool isDelimiter(QChar c) { return c == u',' || c == u'\n' || c == u'\r'; }

    void endItem() {
        if (pos_ >= text_.size())
            return;
        if (text_[pos_] == u',') {
            ++pos_;
            return;
        }
        if (text_[pos_] == u'\r')
            ++pos_;
        if (pos_ < text_.size() && text_[pos_] == u'\n')
            ++pos_;
        skipBlankLines();
    }

    void skipBlankLines() {
        for (;;) {
            qsizetype p = pos_;
            while (p < text_.size() && (text_[p] == u' ' || text_[p] == u'\t'))
                ++p;
            if (p < text_.size() && (text_[p] == u'\n' || text_[p] == u'\r')) {
                pos_ = p + 1;
                continue;
            }
            if (p >= text_.size())
                pos_ = p;
            return;
        }
    }

    QString text_;
    qsizetype pos_ = 0;
};

// The text of the symbol list: UTF-8 when the bytes are valid UTF-8, else the Windows code page
// (1252) that a spreadsheet saves in, so that accented names show as they were typed.
QString symbolsText(const QByteArray& bytes) {
    QStringDecoder utf8(QStringConverter::Utf8);
    QString text = utf8.decode(bytes);
    if (!utf8.hasError())
        return text;
    // 0x80..0x9F of Windows-1252; the other bytes are those of Latin-1. Unassigned ones stay as
    // their C1 control.
    static const char16_t high[32] = {
        0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};
    text.clear();
    text.reserve(bytes.size());
    for (const char byte : bytes) {
        const auto b = static_cast<unsigned char>(byte);
        text += QChar(b >= 0x80 && b < 0xA0 ? high[b - 0x80] : char16_t(b));
    }
    return text;
}

} // namespace

void ReadSymbolsFile() {
    auto& SymbolCount = sharedState().SymbolCount;
    auto& SymbolEntries = sharedState().SymbolEntries;
    SymbolCount = 0;
    SymbolEntries.clear();

    QFile file(ownFileForReading(QStringLiteral("symbols.csv")));
    if (!file.open(QIODevice::ReadOnly))
        return;   // a missing or unreadable list leaves it empty
    ItemReader reader(symbolsText(file.readAll()));
    file.close();

    while (!reader.atEnd()) {
        QString items[3];
        for (QString& item : items)
            passOver([&] { item = reader.next(); });
        ++SymbolCount;
        SymbolEntries.resizeTo(SymbolCount);
        SymbolEntries[SymbolCount] = {items[0], items[1], items[2]};
    }
}
