#pragma once
// The bytes of the CSV files: record lines in the system's code page, with dates as their date
// text and numbers in the plain number form of the user's locale.
//
// A record line is made many thousand times in one conversion, so the pieces that do not change
// within a run (the locale's separators, the form of a date text, the code page) are worked out
// once, when the object is made, under the locale of that moment.

#include <QByteArray>
#include <QString>

#include <array>
#include <memory>
#include <vector>

// Text into bytes of the system's code page: the locale's own code page where it names one,
// Windows-1252 where it gives none; characters the code page lacks become "?".
class CodePage {
public:
    CodePage();
    ~CodePage();
    CodePage(const CodePage&) = delete;
    CodePage& operator=(const CodePage&) = delete;

    void append(QStringView text, QByteArray& out) const;
    QByteArray encode(QStringView text) const;
    // The code page's name ("UTF-8", "ISO-8859-1", "windows-1252").
    QString name() const;

private:
    enum class Kind { Utf8, Latin1, Windows1252, System };
    Kind kind_;
};

class CsvText {
public:
    // Regional: dates and numbers as the regional settings write them (the screen's files).
    // Iso: yyyy-mm-dd dates and a decimal point whatever the locale, for other programs to read.
    enum class Style { Regional, Iso };

    explicit CsvText(Style style = Style::Regional);
    ~CsvText();
    CsvText(const CsvText&) = delete;
    CsvText& operator=(const CsvText&) = delete;

    // The date text of a store date, as DateToText gives it ("N/A" for 0).
    void appendDate(qint32 storeDate, QByteArray& out) const;
    // A stored value in the locale's plain number form, without group separators: the shortest
    // text that reads back as the stored single-precision value ("12.34", "12,34" under a decimal
    // comma), a whole number below 10^15 in full, at most 15 significant digits for a value that
    // is no single-precision number.
    void appendNumber(double value, QByteArray& out) const;
    // One record line, ended by CR LF: date, open, high, low, close, volume, after `prefix`
    // (the symbol and its comma in a merged file, nothing in a file of its own).
    void appendRecord(const QByteArray& prefix, qint32 storeDate, const std::array<double, 5>& values,
                      QByteArray& out) const;

    const CodePage& codePage() const { return codePage_; }

private:
    // A short date form learned from DateToText: fields of digits between fixed separators.
    struct DatePart {
        enum Kind { Text, Day, Month, Year } kind;
        int width;          // least digits of a field (leading zeros); 2 for a two-digit year
        QByteArray text;    // the bytes of a Text part
    };
    bool learnDateForm();
    void appendSlowNumber(double value, QByteArray& out) const;
    // The fast forms of a line's pieces, written at `p`; nullptr when the piece needs the general
    // way (a date or number the learned forms do not cover).
    char* putDate(qint32 storeDate, char* p) const;
    char* putNumber(double value, char* p) const;
    void appendRecordSlowly(const QByteArray& prefix, qint32 storeDate, const std::array<double, 5>& values,
                            QByteArray& out) const;

    CodePage codePage_;
    std::vector<DatePart> dateForm_;   // empty: every date goes through DateToText
    bool plainDigits_ = false;         // the locale writes numbers with ASCII digits and "-"
    QByteArray decimal_;               // the locale's decimal separator, in the code page
    Style style_;
};
