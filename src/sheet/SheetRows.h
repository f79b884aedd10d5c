#pragma once
// The rows of a data sheet: one row per record, six cells of text (date, open, high, low, close,
// volume). These texts are the sheet's only copy of its records: the record dialog reads a
// record's date and values back from them, and a change writes new texts into them.

#include <QAbstractTableModel>
#include <QString>

#include <array>
#include <vector>

struct SheetRow {
    std::array<QString, 6> cells;   // date text, open, high, low, close, volume
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

    // The text of a cell; empty outside the rows.
    QString cell(int row, int column) const;
    // Removes every row.
    void clear();
    // Adds rows at the end, in one go.
    void append(std::vector<SheetRow>&& rows);
    // Replaces cells 1 to 5 (open .. volume) of a row.
    void setValues(int row, const std::array<QString, 5>& values);
    void removeAt(int row);

private:
    std::vector<SheetRow> rows_;
};
