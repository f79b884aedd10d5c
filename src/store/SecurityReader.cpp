#include "store/SecurityReader.h"

#include "frame/Failure.h"
#include "store/Refusal.h"
#include "store/StoreFolder.h"

#include <optional>

using namespace metastock;

namespace {

constexpr Refusal refuse{"SecurityReader"};

} // namespace

struct SecurityReader::Impl {
    std::optional<Folder> folder;
    int cursor = -1;    // the security cursor: -1 before the first
    int selected = -1;  // the security of FindSecurity / OpenSecurity, -1 for none
    std::optional<RecordStream> records;  // of the selected security, once opened
    int recordCursor = -1;

    void requireFolder(const char* operation) const { refuse.requireFolder(folder.has_value(), operation); }
    int current(const char* operation) const {
        requireFolder(operation);
        const int i = selected >= 0 ? selected : cursor;
        if (i < 0)
            refuse(QStringLiteral("No security is selected."), operation);
        return i;
    }
    const Security& security(const char* operation) const {
        const int i = current(operation);   // refuses first when there is no folder
        return folder->index.securities[size_t(i)];
    }
    const Record& record(const char* operation) const {
        if (!records || recordCursor < 0)
            refuse(QStringLiteral("No record is current."), operation);
        return records->at(recordCursor);
    }
    // First and last date of the current security: from its records, or from the index for a
    // security without records (or whose data file cannot be read).
    std::pair<qint32, qint32> dates(const char* operation) const {
        const int i = current(operation);
        const Security& s = folder->index.securities[size_t(i)];
        if (records && i == selected) {
            if (records->count() == 0)
                return {s.firstDate, s.lastDate};
            return {records->summary().firstDate, records->summary().lastDate};
        }
        try {
            const DataSummary sum = summarize(folder->dataPath(s), s.layout(), s.dataFileName());
            if (sum.count > 0)
                return {sum.firstDate, sum.lastDate};
        } catch (const Failure&) {
        }
        return {s.firstDate, s.lastDate};
    }
    void dropSelection() {
        selected = -1;
        records.reset();
        recordCursor = -1;
    }
};

SecurityReader::SecurityReader() : d(std::make_unique<Impl>()) {}
SecurityReader::~SecurityReader() = default;

void SecurityReader::CloseFolder() {
    d->dropSelection();
    d->folder.reset();
    d->cursor = -1;
}

void SecurityReader::CloseSecurity() { d->dropSelection(); }

void SecurityReader::OpenFolder(const QString& folderPath) {
    CloseFolder();
    d->folder = Folder::open(folderPath.trimmed(), true);
}

void SecurityReader::FindSecurity(const QString& name) {
    d->requireFolder("FindSecurity");
    const int i = d->folder->securityNamed(name, "SecurityReader::FindSecurity");
    d->dropSelection();
    d->selected = i;
}

void SecurityReader::OpenSecurity(const QString& symbol) {
    d->requireFolder("OpenSecurity");
    if (symbol.trimmed().isEmpty())
        refuse(QStringLiteral("No symbol was given."), "OpenSecurity");
    const int i = d->folder->securityWithSymbol(symbol, "SecurityReader::OpenSecurity");
    const Security& s = d->folder->index.securities[size_t(i)];
    // Records come oldest first. Files of other writers may hold them out of order or hold a
    // date twice: they are put in order, and records of one date (and time) stay side by side.
    RecordStream records(d->folder->dataPath(s), s.layout(), s.dataFileName());
    d->dropSelection();
    d->selected = i;
    d->records.emplace(std::move(records));
}

void SecurityReader::NextRecord() {
    if (!d->records)
        refuse(QStringLiteral("No security is open."), "NextRecord");
    if (d->recordCursor + 1 >= d->records->count())
        refuse(QStringLiteral("There is no further record."), "NextRecord");
    d->records->load(d->recordCursor + 1);
    ++d->recordCursor;
}

void SecurityReader::NextSecurity() {
    d->requireFolder("NextSecurity");
    if (d->cursor + 1 >= int(d->folder->index.securities.size()))
        refuse(QStringLiteral("There is no further security."), "NextSecurity");
    d->dropSelection();
    ++d->cursor;
}

qint32 SecurityReader::GetFirstDate() const { return d->dates("GetFirstDate").first; }
qint32 SecurityReader::GetLastDate() const { return d->dates("GetLastDate").second; }

qint32 SecurityReader::GetSecuritiesRemaining() const {
    d->requireFolder("GetSecuritiesRemaining");
    return qint32(d->folder->index.securities.size()) - (d->cursor + 1);
}

QString SecurityReader::GetFileName() const { return d->security("GetFileName").dataFileName(); }
QString SecurityReader::GetName() const { return d->security("GetName").name; }
QString SecurityReader::GetSymbol() const { return d->security("GetSymbol").key(); }
double SecurityReader::GetClose() const { return d->record("GetClose").close; }
qint32 SecurityReader::GetDate() const { return d->record("GetDate").date; }
double SecurityReader::GetHigh() const { return d->record("GetHigh").high; }
double SecurityReader::GetLow() const { return d->record("GetLow").low; }

qint32 SecurityReader::GetRecordCount() const {
    const int i = d->current("GetRecordCount");
    if (d->records && i == d->selected)
        return d->records->count();
    const Security& s = d->folder->index.securities[size_t(i)];
    return summarize(d->folder->dataPath(s), s.layout(), s.dataFileName()).count;
}

double SecurityReader::GetOpen() const { return d->record("GetOpen").open; }

qint32 SecurityReader::GetRecordsRemaining() const {
    if (!d->records)
        refuse(QStringLiteral("No security is open."), "GetRecordsRemaining");
    return d->records->count() - (d->recordCursor + 1);
}

double SecurityReader::GetVolume() const { return d->record("GetVolume").volume; }

qint32 SecurityReader::GetPeriodicity() const { return periodicityCode(d->security("GetPeriodicity").periodicity); }

void SecurityReader::SetRecordMode(qint32) {
    // Records always come oldest first, whatever the mode.
}
