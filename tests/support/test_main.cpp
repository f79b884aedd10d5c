// The one main of every test program: an offscreen QApplication that lives for the whole run,
// then GoogleTest.
#include <QApplication>
#include <QLocale>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_LOGGING_RULES", "qt.qpa.*=false");
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Brindlemark v6 tests"));
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
