// Any bytes as a ZIP archive, extracted for real into a scratch folder with options taken from the
// first byte: whatever the archive holds, nothing may appear outside the extraction folder, and
// nothing inside it may be a link.
#include "download/ZipExtractor.h"
#include "frame/Failure.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>
#include <filesystem>

namespace fs = std::filesystem;

namespace {

// scratch/archive.zip, scratch/target/ and nothing else.
struct Scratch {
    QTemporaryDir dir;
    QString archive = dir.filePath(QStringLiteral("archive.zip"));
    QString target = dir.filePath(QStringLiteral("target"));
};

void checkScratch(const Scratch& scratch) {
    for (const fs::directory_entry& entry : fs::directory_iterator(scratch.dir.path().toStdString())) {
        const QString name = QString::fromStdString(entry.path().filename().string());
        if (name != QLatin1String("archive.zip") && name != QLatin1String("target"))
            std::abort();   // something landed beside the target
    }
    if (!fs::exists(scratch.target.toStdString()))
        return;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(scratch.target.toStdString()))
        if (entry.is_symlink())
            std::abort();   // a link was made
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Scratch scratch;
    if (size < 1)
        return 0;
    const uint8_t flags = data[0];
    QFile file(scratch.archive);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        std::abort();
    file.write(reinterpret_cast<const char*>(data + 1), qint64(size - 1));
    file.close();
    // Half the runs start in an empty folder, half over what the last one left.
    if (flags & 0x80)
        QDir(scratch.target).removeRecursively();

    ZipExtractor zip;
    zip.setHonorDirectories(!(flags & 1));
    zip.setSpaceToUnderScore(flags & 2);
    zip.setConvertCRtoCRLF(flags & 4);
    zip.setExtractOnlyNewer(flags & 8);
    zip.setExtractNewer(flags & 16);
    zip.setPrivilege(flags & 32 ? 1 : 0);
    zip.setMessageLevel(flags & 64 ? 0 : 2);
    try {
        zip.Unzip(scratch.archive, scratch.target);
    } catch (const Failure&) {
        std::abort();   // with 16-bit options the run is always made
    }
    checkScratch(scratch);
    return 0;
}
