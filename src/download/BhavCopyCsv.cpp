#include "download/BhavCopyCsv.h"

#include "download/CsvFields.h"
#include "frame/CommonRoutines.h"

#include <QHash>

#include <array>

using namespace CsvFields;

namespace {

enum Column { Symbol, Series, Open, High, Low, Close, Volume, ColumnCount };
using Names = std::array<QByteArrayView, ColumnCount>;

// The columns of each form, in the order of Column.
constexpr std::array<Names, 2> Forms{{
    {"TckrSymb", "SctySrs", "OpnPric", "HghPric", "LwPric", "ClsPric", "TtlTradgVol"},
    {"SYMBOL", "SERIES", "OPEN", "HIGH", "LOW", "CLOSE", "TOTTRDQTY"},
}};

// A series' claim to stand for its symbol: the lower the better.
int seriesRank(QByteArrayView series) {
    if (series.compare("EQ", Qt::CaseInsensitive) == 0)
        return 0;
    if (series.compare("BE", Qt::CaseInsensitive) == 0)
        return 1;
    return 2;
}

bool blank(QByteArrayView line) { return line.trimmed().isEmpty(); }

// The day of a trade date as the two forms write it: 2024-11-04, or 01-JUL-2024.
QDate tradeDate(QByteArrayView text) {
    const QString t = QString::fromLatin1(text.trimmed()).toUpper();
    QDate day = QDate::fromString(t, QStringLiteral("yyyy-MM-dd"));
    if (day.isValid())
        return day;
    const QStringList parts = t.split(QLatin1Char('-'));
    if (parts.size() == 3)
        for (qint16 month = 1; month <= 12; ++month)
            if (parts[1] == MonthAbbreviation(month))
                return QDate(parts[2].toInt(), month, parts[0].toInt());
    return day;
}

// Where the column of the trade date stands; -1 when the file has none.
qsizetype dateColumn(const QList<QByteArrayView>& header) {
    for (qsizetype i = 0; i < header.size(); ++i)
        if (header[i].compare("TradDt", Qt::CaseInsensitive) == 0 || header[i].compare("TIMESTAMP", Qt::CaseInsensitive) == 0)
            return i;
    return -1;
}

// Where each column of a form stands in the header; empty when the header lacks one of them.
std::optional<std::array<qsizetype, ColumnCount>> columnsOf(const QList<QByteArrayView>& header, const Names& names) {
    std::array<qsizetype, ColumnCount> at{};
    for (int c = 0; c < ColumnCount; ++c) {
        at[c] = -1;
        for (qsizetype i = 0; i < header.size() && at[c] < 0; ++i)
            if (header[i].compare(names[c], Qt::CaseInsensitive) == 0)
                at[c] = i;
        if (at[c] < 0)
            return std::nullopt;
    }
    return at;
}

} // namespace

namespace BhavCopyCsv {

std::optional<QList<BhavRow>> read(const QByteArray& csv, QDate* tradeDay) {
    if (tradeDay)
        *tradeDay = QDate();
    QByteArrayView text(csv);
    if (text.startsWith("\xEF\xBB\xBF"))
        text = text.sliced(3);

    qsizetype at = 0;
    QByteArrayView headerLine;
    while (at < text.size() && blank(headerLine))
        headerLine = nextLine(text, at);
    QList<QByteArrayView> fields;
    if (!splitFields(headerLine, fields))
        return std::nullopt;
    std::optional<std::array<qsizetype, ColumnCount>> columns;
    for (const Names& form : Forms)
        if (!columns)
            columns = columnsOf(fields, form);
    if (!columns)
        return std::nullopt;
    const qsizetype dayAt = dateColumn(fields);
    qsizetype needed = 0;
    for (const qsizetype c : *columns)
        needed = std::max(needed, c + 1);

    QList<BhavRow> rows;
    QList<int> ranks;
    QHash<QString, qsizetype> rowOf;
    while (at < text.size()) {
        const QByteArrayView line = nextLine(text, at);
        if (blank(line) || !splitFields(line, fields) || fields.size() < needed)
            continue;
        const auto field = [&](Column c) { return fields[(*columns)[c]]; };
        if (tradeDay && !tradeDay->isValid() && dayAt >= 0 && dayAt < fields.size())
            *tradeDay = tradeDate(fields[dayAt]);
        BhavRow row;
        row.Symbol = QString::fromUtf8(field(Symbol));
        if (row.Symbol.isEmpty() || row.Symbol == u"W1")   // never written, as in the older files
            continue;
        const auto open = number(field(Open));
        const auto high = number(field(High));
        const auto low = number(field(Low));
        const auto close = number(field(Close));
        const auto volume = number(field(Volume));
        if (!open || !high || !low || !close || !volume)
            continue;
        row.HasPrices = true;
        row.Open = *open;
        row.High = *high;
        row.Low = *low;
        row.Close = *close;
        row.Volume = *volume;

        const int rank = seriesRank(field(Series));
        const auto known = rowOf.constFind(row.Symbol);
        if (known == rowOf.cend()) {
            rowOf.insert(row.Symbol, rows.size());
            rows.append(std::move(row));
            ranks.append(rank);
        } else if (rank < ranks[*known]) {
            rows[*known] = std::move(row);
            ranks[*known] = rank;
        }
    }
    if (rows.isEmpty())
        return std::nullopt;
    return rows;
}

} // namespace BhavCopyCsv
