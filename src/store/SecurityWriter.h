#pragma once
// Writing a data folder: creating and deleting securities, adding, changing and deleting records.
// Every operation raises Failure (with a description a user can read) when it cannot do what is
// asked. Records written with mark -1 and ChangeQuote go through at once; records added with
// mark 0 and DeleteQuote are kept until SaveQuotes. A writer released while a failure unwinds
// drops the batch it holds: a refused batch writes nothing.
//
// Creating, deleting and renaming securities changes the index in memory; the index files are
// written when the folder closes (CloseFolder, the next OpenFolder, or the writer's release), the
// data files of deleted securities removed after that. A crash before leaves every security as it
// was. A store whose index files are read-only is refused at OpenFolder.

#include <QString>

#include <memory>

class SecurityWriter {
public:
    SecurityWriter();
    ~SecurityWriter();
    SecurityWriter(const SecurityWriter&) = delete;
    SecurityWriter& operator=(const SecurityWriter&) = delete;

    // Adds a security to the open folder and leaves it selected. The program passes the same text
    // as symbol and name, and 1 (daily) as periodicity.
    void CreateSecurity(const QString& symbol, const QString& name, qint32 periodicity);
    // Adds a record to the selected security; a date the security holds is replaced.
    void AddQuote(qint32 storeDate, qint32 mark, double open, double high, double low, double close,
                  double volume, double extra);
    void CloseFolder();
    // Opens a data folder. An existing folder without a store opens as an empty store: this is
    // how a first store is made (its index files come when the folder closes).
    void OpenFolder(const QString& folderPath);
    void FindSecurity(const QString& name);
    void OpenSecurity(const QString& symbol);
    void DeleteSecurity(const QString& symbol);
    // Removes the record of that date (store date text, "20050806").
    void DeleteQuote(const QString& storeDateText);
    // Removes the records from first to last date, both inclusive.
    void DeleteQuotes(const QString& firstDateText, const QString& lastDateText);
    void ChangeQuote(const QString& storeDateText, const QString& markText, qint32 mark, double open,
                     double high, double low, double close, double volume, double extra);
    void ChangeSecurity(const QString& oldSymbol, const QString& name, const QString& symbol);
    // Where a security holds several records of one date (the bars of an intraday day, or what
    // another program wrote): the `nth` of them (from 0, oldest first) takes new values, keeping
    // its time and open interest, or goes, and no other. Written at once. ChangeQuote is
    // ChangeNthQuote of the first; it too keeps time and open interest.
    void ChangeNthQuote(const QString& storeDateText, int nth, double open, double high, double low, double close,
                        double volume);
    void DeleteNthQuote(const QString& storeDateText, int nth);
    bool SymbolExists(const QString& symbol);
    void CloseSecurity();
    bool DateExists(const QString& storeDateText);
    void SaveQuotes();
    // Whether a security can start on this store date: a real day of the years 1900 to 2999, but
    // not 1 January 1900, which an index takes for no date.
    static bool CanHoldDate(qint32 storeDate);
    // Raises the refusal CreateSecurity would give for this symbol in a folder that holds no
    // other security of it (none, too long, a character the store cannot hold).
    static void CheckSymbol(const QString& symbol);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
