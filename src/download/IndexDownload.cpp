#include "download/IndexDownload.h"

#include "download/Inet.h"
#include "download/ServiceAddresses.h"
#include "download/ZipExtractor.h"
#include "frame/Failure.h"
#include "frame/Platform.h"
#include "store/FolderLock.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {
const QString Source = QStringLiteral("IndexDownload::Run");
}

QString IndexDownload::ArchiveUrl() {
    return ServiceAddresses::nseIndexArchive() + ServiceAddresses::IndexArchivePath;
}

QString IndexDownload::ArchivePath() { return QDir(platform().cacheFolder()).filePath(QStringLiteral("tmp.zip")); }

qint32 IndexDownload::Run(const QString& folder) {
    // The archive is unpacked over a data folder: no other program may be writing it meanwhile, and
    // none may start to until it is unpacked. Taken before the fetch, so a refused run fetches nothing.
    const FolderLock lock(folder, "IndexDownload", "Run");
    const QString url = ArchiveUrl();
    QByteArray bytes;
    try {
        bytes = connection_.OpenURLBytes(url);
    } catch (const Failure& failure) {
        throw Failure(failure.Number,
                      QStringLiteral("The index data could not be fetched from %1: %2").arg(url, failure.Description),
                      Source);
    }
    if (connection_.ResponseCode() != 200)
        throw Failure(FailureNumber::Network,
                      QStringLiteral("The server answered %1 for %2: there is no index data to unpack.")
                          .arg(connection_.ResponseCode())
                          .arg(url),
                      Source);

    const QString path = ArchivePath();
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size() || !file.flush()) {
        const QString cause = file.errorString();
        file.close();
        throw Failure(FailureNumber::PathFileAccess,
                      QStringLiteral("The archive could not be written to %1: %2")
                          .arg(QDir::toNativeSeparators(path), cause),
                      Source);
    }
    file.close();

    ZipExtractor extractor;
    return extractor.Unzip(path, folder);
}
