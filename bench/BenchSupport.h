#pragma once
// What the benchmark programs share: platform services for a run without a person (boxes are
// counted, never shown; the program's own files go to a temporary folder), and the run of the
// registered benchmarks under the en_GB locale.

#include "frame/Platform.h"

#include <QDate>
#include <QLocale>
#include <QMap>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

class QuietPlatform : public Platform {
public:
    explicit QuietPlatform(QDate today) : today_(today) {}

    int boxes = 0;
    QMap<QString, QString> settings;   // "Section/Key" -> value

    MsgAnswer messageBox(const QString&, MsgIcon, const QString&, MsgButtons) override {
        ++boxes;
        return MsgAnswer::Ok;
    }
    QString chooseFolder(QObject*, const QString&) override { return {}; }
    QString prompt(const QString&, const QString&, const QString&) override { return {}; }
    bool openAddress(const QString&) override { return false; }
    QDate today() override { return today_; }
    void quit() override {}
    QString programFolder() override { return dir_.path(); }
    QString userDataFolder() override { return dir_.path(); }
    QString cacheFolder() override { return dir_.path(); }
    QString getSetting(const QString& section, const QString& key, const QString& defaultValue) override {
        return settings.value(section + u'/' + key, defaultValue);
    }
    void saveSetting(const QString&, const QString&, const QString&) override {}

private:
    QDate today_;
    QTemporaryDir dir_;
};

// Runs the benchmarks named on the command line (all by default); the program's exit code.
inline int RunBenchmarks(int argc, char** argv) {
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
