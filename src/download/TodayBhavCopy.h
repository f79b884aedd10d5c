#pragma once
// The exchange's daily equity file as it is published today: one zipped CSV file a day, asked
// for with a browser's User-Agent and the exchange's site as Referer. Days from 8 July 2024 on
// have the new form, the days before the older 13-column form at its historical path. Any
// answer but 200, a failed transfer, or a body that is no archive of such a file: no data.

#include "download/BhavCopy.h"

#include <QByteArray>

class TodayBhavCopy : public BhavCopySource {
public:
    // `address`: scheme, host and port of the server, no final slash.
    TodayBhavCopy(Inet& connection, QString address) : connection_(connection), address_(std::move(address)) {}

    std::optional<QList<BhavRow>> FetchDay(const QDate& day) override;

    // The first day published in the new form.
    static inline const QDate FirstNewFormDay{2024, 7, 8};
    // The largest file unpacked from a day's archive; a member that claims or inflates to more is
    // no data.
    static constexpr qint64 MaxFileBytes = qint64(64) * 1024 * 1024;

    // The path of a day's archive: "/content/cm/BhavCopy_NSE_CM_0_0_0_20241104_F_0000.csv.zip",
    // before FirstNewFormDay "/content/historical/EQUITIES/2024/JUL/cm01JUL2024bhav.csv.zip".
    static QString DayPath(const QDate& day);
    // The rows of a day's archive: its one CSV file unpacked in memory and read.
    static std::optional<QList<BhavRow>> ReadArchive(const QByteArray& archive, QDate* tradeDay = nullptr);

private:
    Inet& connection_;
    QString address_;
};
