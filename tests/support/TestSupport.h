#pragma once
// Small helpers shared by the tests.

#include <QDir>
#include <QLocale>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <ostream>

// Texts in the messages of failed checks.
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }
inline void PrintTo(const QStringList& texts, std::ostream* out) { *out << '{' << texts.join('|').toStdString() << '}'; }

// Pins the locale for the lifetime of the object.
class LocaleGuard {
public:
    explicit LocaleGuard(const QString& name) : saved_(QLocale()) { QLocale::setDefault(QLocale(name)); }
    ~LocaleGuard() { QLocale::setDefault(saved_); }
    LocaleGuard(const LocaleGuard&) = delete;
    LocaleGuard& operator=(const LocaleGuard&) = delete;

private:
    QLocale saved_;
};

// A fresh temporary folder for one test.
class TempFolder {
public:
    TempFolder() { EXPECT_TRUE(dir_.isValid()); }
    QString path() const { return dir_.path(); }
    QString file(const QString& name) const { return QDir(dir_.path()).filePath(name); }
    // A sub-folder, made when missing.
    QString sub(const QString& name) const {
        QDir(dir_.path()).mkpath(name);
        return file(name);
    }

private:
    QTemporaryDir dir_;
};

// A file or folder of the shared fixtures beside the repository (services/x.json); empty when
// the fixtures are not found.
QString sharedFixture(const QString& relativePath);
// The shared MetaStock fixture folders (../shared/fixtures/metastock/<name>); empty when absent.
QString metastockFixture(const QString& name);

// Copies a fixture folder into `target` (never write into the fixtures). False when absent.
bool copyFixture(const QString& name, const QString& target);

// Skips the current test with a clear message when the fixture folder is absent.
#define REQUIRE_FIXTURE(name)                                                                  \
    do {                                                                                       \
        if (metastockFixture(name).isEmpty())                                                  \
            GTEST_SKIP() << "fixture folder " << (name) << " not found beside the repository"; \
    } while (0)

// Writes text to a file, replacing it.
void writeTextFile(const QString& path, const QByteArray& bytes);
QByteArray readFileBytes(const QString& path);

class QWidget;

// Every control of a shown screen (a named field, label, button, list or drop-down) lies inside it,
// is shown, and is clear of the others: a control left out of the layout fails this.
void expectControlsLaidOut(QWidget* screen);

// The lock of a data folder held by another process, as a second run of the program would hold
// it ("brindlemark-cli", process 4242, on this host unless told). Returns once the lock is held,
// with a test failure when another holds it; the holder ends with the object, and its lock with it.
class ForeignLockHolder {
public:
    explicit ForeignLockHolder(const QString& folder, const QString& host = {});
    ~ForeignLockHolder();
    ForeignLockHolder(const ForeignLockHolder&) = delete;
    ForeignLockHolder& operator=(const ForeignLockHolder&) = delete;

private:
    int pid_ = -1;
    int release_ = -1;   // the holder ends when this end of its pipe closes
};
