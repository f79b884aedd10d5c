// Writes the program's icon as PNG files at the sizes a desktop looks for:
// <folder>/<n>x<n>/apps/brindlemark.png. Run at build time, offscreen.
#include "frame/ui/ProgramIcon.h"

#include <QDir>
#include <QGuiApplication>
#include <QPixmap>

#include <cstdio>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: make_icons FOLDER\n");
        return 2;
    }
    for (int size : {16, 24, 32, 48, 64, 128, 256}) {
        const QString folder = QDir(QString::fromLocal8Bit(argv[1])).filePath(QStringLiteral("%1x%1/apps").arg(size));
        if (!QDir().mkpath(folder) || !ProgramPixmap(size).save(QDir(folder).filePath(QStringLiteral("brindlemark.png")))) {
            std::fprintf(stderr, "make_icons: cannot write %s\n", qPrintable(folder));
            return 1;
        }
    }
    return 0;
}
