#include "ExportCommand.h"

#include "export/CsvConversion.h"
#include "frame/Failure.h"
#include "store/SecurityReader.h"

#include <QDir>

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
        if (!QDir(destination).exists() && !QDir().mkpath(destination)) {
            err << "brindlemark-cli: the folder " << destination << " cannot be made\n";
            return 1;
        }
        CsvConversion conversion;
        conversion.isoForm = iso;
        Lines lines(out);
        conversion.convert(folder, destination, symbols.isEmpty() ? allSymbols(folder) : symbols, merge, &lines);
        return 0;
    } catch (const Failure& failure) {
        err << "brindlemark-cli: " << failure.Description << '\n';
        return 1;
    }
}
