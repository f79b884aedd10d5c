#pragma once
// Helpers for the tests of the data sheet and of Open Security: data folders made through the
// store's own writer, records read back from disk, a progress window that records what it is
// told (and can be cancelled), and the sheets standing open.

#include "sheet/ui/frmView.h"
#include "store/ReadProgress.h"
#include "store/SecurityReader.h"
#include "store/SecurityWriter.h"

#include <QApplication>
#include <QDate>
#include <QStringList>
#include <QWidget>

#include <memory>
#include <vector>

// Readable failure messages for texts and lists of texts.
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }
inline void PrintTo(const QStringList& texts, std::ostream* out) {
    *out << '{' << texts.join(QStringLiteral("|")).toStdString() << '}';
}

namespace sheettest {

struct Rec {
    qint32 date = 0;
    double open = 0, high = 0, low = 0, close = 0, volume = 0;
    bool operator==(const Rec&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Rec& r) {
    return out << r.date << " " << r.open << "/" << r.high << "/" << r.low << "/" << r.close << " v" << r.volume;
}

// Adds a security with these records to `folder` (made a store when it is none yet).
inline void makeSecurity(const QString& folder, const QString& symbol, const QString& name,
                         const std::vector<Rec>& records, qint32 periodicity = 1) {
    SecurityWriter writer;
    writer.OpenFolder(folder);
    writer.CreateSecurity(symbol, name, periodicity);
    for (const Rec& r : records)
        writer.AddQuote(r.date, 0, r.open, r.high, r.low, r.close, r.volume, 0.0);
    writer.SaveQuotes();
    writer.CloseSecurity();
    writer.CloseFolder();
}

// `count` daily records from 2 January 2004 on, working days only, with values that differ.
inline std::vector<Rec> series(int count, QDate from = QDate(2004, 1, 2)) {
    std::vector<Rec> records;
    QDate day = from;
    for (int i = 0; i < count; ++i) {
        while (day.dayOfWeek() > 5)
            day = day.addDays(1);
        const double base = 100 + (i % 500) * 0.25;
        records.push_back({day.year() * 10000 + day.month() * 100 + day.day(), base, base + 2, base - 1,
                           base + 0.5, 1000.0 + i});
        day = day.addDays(1);
    }
    return records;
}

// The records of a security as the store hands them out now.
inline std::vector<Rec> readBack(const QString& folder, const QString& symbol) {
    SecurityReader reader;
    reader.OpenFolder(folder);
    reader.OpenSecurity(symbol);
    std::vector<Rec> records;
    while (reader.GetRecordsRemaining() >= 1) {
        reader.NextRecord();
        records.push_back({reader.GetDate(), reader.GetOpen(), reader.GetHigh(), reader.GetLow(),
                           reader.GetClose(), reader.GetVolume()});
    }
    reader.CloseSecurity();
    reader.CloseFolder();
    return records;
}

// What the progress windows of a test were told, call by call ("Show", "SetRange 0 3", "StepIt",
// ...), and how many are alive.
struct ProgressLog {
    QStringList calls;
    int alive = 0;
    int made = 0;
    int cancelAfterSteps = -1;   // GetCancelled answers true once this many steps have been made
    int steps = 0;
};

class RecordingProgress : public ReadProgress {
public:
    explicit RecordingProgress(std::shared_ptr<ProgressLog> log) : log_(std::move(log)) {
        ++log_->alive;
        ++log_->made;
    }
    ~RecordingProgress() override {
        --log_->alive;
        log_->calls << QStringLiteral("released");
    }
    void Show() override { log_->calls << QStringLiteral("Show"); }
    void Hide() override { log_->calls << QStringLiteral("Hide"); }
    void SetRange(qint32 low, qint32 high) override {
        log_->calls << QStringLiteral("SetRange %1 %2").arg(low).arg(high);
    }
    void SetCaption(const QString& caption) override { log_->calls << QStringLiteral("SetCaption ") + caption; }
    void SetMessage(const QString& message) override { log_->calls << QStringLiteral("SetMessage ") + message; }
    void SetStep(qint32 step) override { log_->calls << QStringLiteral("SetStep %1").arg(step); }
    void StepIt() override {
        ++log_->steps;
        log_->calls << QStringLiteral("StepIt");
    }
    bool GetCancelled() const override {
        return log_->cancelAfterSteps >= 0 && log_->steps >= log_->cancelAfterSteps;
    }

private:
    std::shared_ptr<ProgressLog> log_;
};

// Installs recording progress windows for the lifetime of the object.
class ProgressRecorder {
public:
    ProgressRecorder() : log(std::make_shared<ProgressLog>()) {
        auto shared = log;
        ReadProgress::setFactory([shared] { return std::make_unique<RecordingProgress>(shared); });
    }
    ~ProgressRecorder() { ReadProgress::setFactory({}); }
    ProgressRecorder(const ProgressRecorder&) = delete;
    ProgressRecorder& operator=(const ProgressRecorder&) = delete;

    std::shared_ptr<ProgressLog> log;
};

// The data sheets standing as windows, oldest first.
inline QList<frmView*> openSheets() {
    QList<frmView*> sheets;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto sheet = qobject_cast<frmView*>(w); sheet && sheet->isVisible())
            sheets.append(sheet);
    return sheets;
}

// Closes the sheets a test left open (they delete themselves on close).
struct SheetCleanup {
    ~SheetCleanup() {
        for (frmView* sheet : openSheets())
            sheet->close();
        QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
};

} // namespace sheettest
