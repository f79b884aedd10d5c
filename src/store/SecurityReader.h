#pragma once
// Reading a data folder: the securities of the folder and the records of a security.
// Every operation raises Failure (with a description a user can read) when it cannot do what is
// asked; the object stays usable afterwards.

#include <QString>

#include <memory>

class SecurityReader {
public:
    SecurityReader();
    ~SecurityReader();
    SecurityReader(const SecurityReader&) = delete;
    SecurityReader& operator=(const SecurityReader&) = delete;

    void CloseFolder();
    void CloseSecurity();
    // Opens a data folder; the security cursor stands before the first security.
    void OpenFolder(const QString& folderPath);
    // Selects the security of that name, for its header.
    void FindSecurity(const QString& name);
    // Selects the security of that symbol, for its records; the record cursor stands before the first.
    void OpenSecurity(const QString& symbol);
    void NextRecord();
    void NextSecurity();
    qint32 GetFirstDate() const;   // store date yyyymmdd, 0 for none
    qint32 GetLastDate() const;
    qint32 GetSecuritiesRemaining() const;
    QString GetFileName() const;
    QString GetName() const;
    QString GetSymbol() const;
    double GetClose() const;
    qint32 GetDate() const;
    double GetHigh() const;
    double GetLow() const;
    qint32 GetRecordCount() const;
    double GetOpen() const;
    qint32 GetRecordsRemaining() const;
    double GetVolume() const;
    qint32 GetPeriodicity() const;   // 1 daily, 2 weekly, 3 monthly, ...
    void SetRecordMode(qint32 mode);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};
