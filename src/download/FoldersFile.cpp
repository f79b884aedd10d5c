#include "download/FoldersFile.h"

#include "frame/Platform.h"

#include <QFile>
#include <QSaveFile>

namespace {
const QString FileName = QStringLiteral("folders.txt");
}

namespace FoldersFile {

QStringList delimitedFields(const QByteArray& bytes) {
    const QString text = QString::fromUtf8(bytes);
    QStringList fields;
    const qsizetype size = text.size();
    qsizetype pos = 0;
    auto atLineEnd = [&](qsizetype p) { return text[p] == u'\r' || text[p] == u'\n'; };
    // Steps over one delimiter: a comma, or a line end (CR LF counts once).
    auto skipDelimiter = [&] {
        if (pos >= size)
            return;
        if (text[pos] == u'\r' && pos + 1 < size && text[pos + 1] == u'\n')
            pos += 2;
        else
            ++pos;
    };

    while (pos < size) {
        while (pos < size && (text[pos] == u' ' || text[pos] == u'\t'))
            ++pos;
        QString field;
        if (pos < size && text[pos] == u'"') {
            const qsizetype close = text.indexOf(u'"', pos + 1);
            const qsizetype end = close < 0 ? size : close;
            field = text.mid(pos + 1, end - pos - 1);
            pos = close < 0 ? size : close + 1;
            // Whatever stands between the closing quote and the delimiter is passed over.
            while (pos < size && text[pos] != u',' && !atLineEnd(pos))
                ++pos;
        } else {
            const qsizetype start = pos;
            while (pos < size && text[pos] != u',' && !atLineEnd(pos))
                ++pos;
            field = text.mid(start, pos - start);
        }
        skipDelimiter();
        fields << field;
    }
    return fields;
}

QStringList read() {
    QFile file(ownFileForReading(FileName));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return delimitedFields(file.readAll());
}

QString writtenPath() { return ownFileForWriting(FileName); }

bool write(const QStringList& folders) {
    QByteArray bytes;
    for (const QString& folder : folders)
        bytes += folder.trimmed().toUtf8() + "\r\n";
    QSaveFile file(writtenPath());
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (file.write(bytes) != bytes.size()) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

} // namespace FoldersFile
