#include "ExportCommand.h"

#include "export/CsvConversion.h"
#include "frame/Failure.h"
#include "store/SecurityReader.h"

#include <QDir>

#include <algorithm>

namespace {

class Lines : public CsvConversionListener {
public:
    explicit Lines(QTextStream& out) : out_(out) {}
    void securityConverted(const QString& symbol, const QString& file, qint32 records) override {
        out_ << symbol << ' ' << records << " records " << QDir::toNativeSeparators(file) << '\n';
        out_.flush();
    }

private:
    QTextStream& out_;
};

QStringList allSymbols(const QString& folder) {
    SecurityReader reader;
    reader.OpenFolder(folder.trimmed());
    QStringList symbols;
    while (reader.GetSecuritiesRemaining() > 0) {
        reader.NextSecurity();
        symbols << reader.GetSymbol().trimmed();
    }
    reader.CloseFolder();
    return symbols;
}

} // namespace

int exportCsv(const QString& folder, const QString& destination, const QStringList& symbols, bool merge,
              bool iso, QTextStream& out, QTextStream& err) {
    try {
        // The folder is read first: a folder that can't be, or a symbol it lacks, writes nothing.
        const QStringList held = allSymbols(folder);
        QStringList chosen;
        for (const QString& raw : symbols) {
            // The symbol as the store holds it, whatever the case it was typed in.
            const QString typed = raw.trimmed();
            auto found = std::find(held.begin(), held.end(), typed);
            if (found == held.end())
                found = std::find_if(held.begin(), held.end(),
                                     [&](const QString& h) { return h.compare(typed, Qt::CaseInsensitive) == 0; });
            if (found == held.end()) {
                err << "brindlemark-cli: " << typed << ": not in the folder " << folder << '\n';
                return 1;
            }
            chosen << *found;
        }
        if (!QDir(destination).exists() && !QDir().mkpath(destination)) {
            err << "brindlemark-cli: the folder " << destination << " cannot be made\n";
            return 1;
        }
        CsvConversion conversion;
        conversion.isoForm = iso;
        Lines lines(out);
        conversion.convert(folder, destination, symbols.isEmpty() ? held : chosen, merge, &lines);
        return 0;
    } catch (const Failure& failure) {
        err << "brindlemark-cli: " << failure.Description << '\n';
        return 1;
    }
}
