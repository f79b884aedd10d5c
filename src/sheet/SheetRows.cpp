#include "sheet/SheetRows.h"

#include "frame/CommonRoutines.h"
#include "frame/Regional.h"

#include <QStringList>

SheetRows::SheetRows(QObject* parent) : QAbstractTableModel(parent) {}

int SheetRows::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int SheetRows::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : ColumnCount; }

QVariant SheetRows::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= ColumnCount)
        return {};
    if (role == Qt::DisplayRole)
        return cell(index.row(), index.column());
    if (role == Qt::TextAlignmentRole && index.column() != DateColumn)
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

QVariant SheetRows::headerData(int section, Qt::Orientation orientation, int role) const {
    static const QStringList headings = {QStringLiteral("Date"), QStringLiteral("Open"),
                                         QStringLiteral("High"), QStringLiteral("Low"),
                                         QStringLiteral("Close"), QStringLiteral("Volume")};
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount)
        return QAbstractTableModel::headerData(section, orientation, role);
    if (role == Qt::DisplayRole)
        return headings.at(section);
    if (role == Qt::TextAlignmentRole && section != DateColumn)
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

QString SheetRows::cell(int row, int column) const {
    if (row < 0 || row >= rowCount() || column < 0 || column >= ColumnCount)
        return {};
    const SheetRow& r = rows_[static_cast<size_t>(row)];
    if (column == DateColumn)
        return DateToText(r.date);
    const double value = r.values[static_cast<size_t>(column - 1)];
    if (r.plain || column == VolumeColumn)
        return Regional::numberText(value);
    return Regional::priceText(value);
}

std::pair<int, int> SheetRows::placeInDate(int row) const {
    if (row < 0 || row >= rowCount())
        return {0, 0};
    const qint32 date = rows_[static_cast<size_t>(row)].date;
    int before = 0, all = 0;
    for (size_t i = 0; i < rows_.size(); ++i) {
        if (rows_[i].date != date)
            continue;
        before += i < static_cast<size_t>(row) ? 1 : 0;
        ++all;
    }
    return {before, all};
}

std::optional<QDate> SheetRows::rowDate(int row) const {
    if (row < 0 || row >= rowCount())
        return std::nullopt;
    const QDate date = Regional::fromStoreDate(rows_[static_cast<size_t>(row)].date);
    if (!date.isValid())
        return std::nullopt;
    return date;
}

void SheetRows::clear() {
    if (rows_.empty())
        return;
    beginResetModel();
    rows_.clear();
    endResetModel();
}

void SheetRows::append(std::vector<SheetRow>&& rows) {
    if (rows.empty())
        return;
    const int first = rowCount();
    beginInsertRows({}, first, first + static_cast<int>(rows.size()) - 1);
    if (rows_.empty()) {
        rows_ = std::move(rows);
    } else {
        rows_.insert(rows_.end(), std::make_move_iterator(rows.begin()), std::make_move_iterator(rows.end()));
    }
    rows.clear();
    endInsertRows();
}

void SheetRows::setValues(int row, const std::array<double, 5>& values) {
    if (row < 0 || row >= rowCount())
        return;
    rows_[static_cast<size_t>(row)].values = values;
    rows_[static_cast<size_t>(row)].plain = true;
    emit dataChanged(index(row, OpenColumn), index(row, VolumeColumn));
}

void SheetRows::removeAt(int row) {
    if (row < 0 || row >= rowCount())
        return;
    beginRemoveRows({}, row, row);
    rows_.erase(rows_.begin() + row);
    endRemoveRows();
}
