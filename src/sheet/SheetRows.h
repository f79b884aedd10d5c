#pragma once
// The rows of a data sheet: one row per record, shown in six cells (date, open, high, low, close,
// volume). These rows are the sheet's only copy of its records. A row keeps the record's date
// and values and gives them as the texts the user reads: the date text of the store date, the
// prices in the pattern "####0.00" and the volume as plain number text; a row whose values the
// user has changed shows all five as plain number text. A row is known to the store by its own
// store date, never by the text it shows.
//
// The texts are made when a cell is asked for, so a long security costs no text at all for the
// rows that are never shown.

#include <QAbstractTableModel>
#include <QDate>
#include <QString>

#include <array>
#include <optional>
#include <vector>

struct SheetRow {
    qint32 date = 0;                 // store date yyyymmdd
    std::array<double, 5> values{};  // open, high, low, close, volume
    bool plain = false;              // true once changed by the user: plain number text throughout
};

class SheetRows : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { DateColumn = 0, OpenColumn, HighColumn, LowColumn, CloseColumn, VolumeColumn };
    static constexpr int ColumnCount = 6;

    explicit SheetRows(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // The text of a cell as the sheet shows it; empty outside the rows.
    QString cell(int row, int column) const;
    // The date of a row's record, from its store date; empty outside the rows or for a store date
    // that is no date.
    std::optional<QDate> rowDate(int row) const;
    // Which of the rows of its date `row` is (from 0, in the sheet's order), and how many rows
    // that date has: the bars of an intraday day share one date.
    std::pair<int, int> placeInDate(int row) const;
    // Removes every row.
    void clear();
    // Adds rows at the end, in one go.
    void append(std::vector<SheetRow>&& rows);
    // Gives a row new values (open .. volume), shown from now on as plain number text.
    void setValues(int row, const std::array<double, 5>& values);
    void removeAt(int row);

private:
    std::vector<SheetRow> rows_;
};
