#include "download/IndexCloses.h"

#include "download/CsvFields.h"

#include <array>

using namespace CsvFields;

namespace {

enum Column { Name, Date, Open, High, Low, Close, Volume, ColumnCount };
constexpr std::array<QByteArrayView, ColumnCount> ColumnNames{
    "Index Name", "Index Date", "Open Index Value", "High Index Value", "Low Index Value",
    "Closing Index Value", "Volume"};

bool missing(QByteArrayView field) { return field.isEmpty() || field == "-"; }

QDate dateOf(QByteArrayView field) {
    return QDate::fromString(QString::fromLatin1(field), QStringLiteral("d-M-yyyy"));
}

} // namespace

namespace IndexCloses {

std::optional<QList<IndexClose>> read(const QByteArray& csv) {
    QByteArrayView text(csv);
    if (text.startsWith("\xEF\xBB\xBF"))
        text = text.sliced(3);

    qsizetype at = 0;
    QByteArrayView headerLine;
    while (at < text.size() && headerLine.trimmed().isEmpty())
        headerLine = nextLine(text, at);
    QList<QByteArrayView> fields;
    if (!splitFields(headerLine, fields))
        return std::nullopt;
    std::array<qsizetype, ColumnCount> column;
    column.fill(-1);
    for (int c = 0; c < ColumnCount; ++c)
        for (qsizetype i = 0; i < fields.size() && column[c] < 0; ++i)
            if (fields[i].compare(ColumnNames[c], Qt::CaseInsensitive) == 0)
                column[c] = i;
    if (column[Name] < 0 || column[Date] < 0 || column[Close] < 0)
        return std::nullopt;
    qsizetype needed = 0;
    for (const qsizetype c : column)
        needed = std::max(needed, c + 1);

    QList<IndexClose> rows;
    while (at < text.size()) {
        const QByteArrayView line = nextLine(text, at);
        if (line.trimmed().isEmpty() || !splitFields(line, fields) || fields.size() < needed)
            continue;
        const auto field = [&](Column c) { return column[c] < 0 ? QByteArrayView() : fields[column[c]]; };
        IndexClose row;
        row.Name = QString::fromUtf8(field(Name)).simplified();
        row.Date = dateOf(field(Date));
        const auto close = number(field(Close));
        if (row.Name.isEmpty() || !row.Date.isValid() || !close)
            continue;
        row.Close = *close;
        // A value that does not exist takes the close (a volume 0); one that is there must read.
        bool readable = true;
        const auto value = [&](Column c, double otherwise) {
            if (missing(field(c)))
                return otherwise;
            const auto v = number(field(c));
            readable = readable && v.has_value();
            return v.value_or(otherwise);
        };
        row.Open = value(Open, row.Close);
        row.High = value(High, row.Close);
        row.Low = value(Low, row.Close);
        row.Volume = value(Volume, 0.0);
        if (readable)
            rows.append(std::move(row));
    }
    if (rows.isEmpty())
        return std::nullopt;
    return rows;
}

} // namespace IndexCloses
