#include "download/CsvFields.h"

#include <cmath>

namespace CsvFields {

QByteArrayView nextLine(QByteArrayView text, qsizetype& at) {
    const qsizetype start = at;
    while (at < text.size() && text[at] != '\n' && text[at] != '\r')
        ++at;
    const QByteArrayView line = text.sliced(start, at - start);
    if (at < text.size() && text[at++] == '\r' && at < text.size() && text[at] == '\n')
        ++at;
    return line;
}

bool splitFields(QByteArrayView line, QList<QByteArrayView>& fields) {
    fields.clear();
    qsizetype at = 0;
    for (;;) {
        while (at < line.size() && (line[at] == ' ' || line[at] == '\t'))
            ++at;
        qsizetype end;
        if (at < line.size() && line[at] == '"') {
            qsizetype close = at + 1;
            for (;;) {
                while (close < line.size() && line[close] != '"')
                    ++close;
                if (close >= line.size())
                    return false;
                if (close + 1 < line.size() && line[close + 1] == '"') {
                    close += 2;
                    continue;
                }
                break;
            }
            fields.append(line.sliced(at + 1, close - at - 1).trimmed());
            end = close + 1;
            while (end < line.size() && line[end] != ',')
                ++end;
        } else {
            end = at;
            while (end < line.size() && line[end] != ',')
                ++end;
            fields.append(line.sliced(at, end - at).trimmed());
        }
        if (end >= line.size())
            return true;
        at = end + 1;
    }
}

std::optional<double> number(QByteArrayView text) {
    bool ok = false;
    const double value = text.toDouble(&ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

} // namespace CsvFields
