#include "frame/CommonRoutines.h"

#include "frame/Failure.h"
#include "frame/ProgramState.h"
#include "frame/Platform.h"
#include "frame/Regional.h"

#include <QFile>

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

} // namespace

void ReadSymbolsFile() {
    auto& SymbolCount = sharedState().SymbolCount;
    auto& SymbolEntries = sharedState().SymbolEntries;
    SymbolCount = 0;
    SymbolEntries.clear();

    QFile file(ownFileForReading(QStringLiteral("symbols.csv")));
    if (!file.open(QIODevice::ReadOnly))
        return;   // a missing or unreadable list leaves it empty
    ItemReader reader(QString::fromUtf8(file.readAll()));
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
