// Adjust Security and Delete Data: walking to a folder with the drive and folder lists, renaming
// and deleting a security, and deleting a security's records up to a date.

#include "sheet/SheetTestKit.h"

#include "catalogue/ui/AdjustSecurityDialog.h"
#include "catalogue/ui/DeleteDataDialog.h"
#include <QComboBox>
#include <QAbstractItemView>
#include <QAbstractButton>
#include "frame/CommonRoutines.h"
#include "frame/ProgramState.h"
#include "frame/Regional.h"
#include "frame/ui/DriveList.h"
#include "frame/ui/FolderList.h"

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>

using namespace sheettest;

namespace {

QStringList names(const QListWidget* list) {
    QStringList out;
    for (int i = 0; i < list->count(); ++i)
        out << list->item(i)->text();
    return out;
}

void clickEntry(QListWidget* list, const QString& name) {
    const QList<QListWidgetItem*> found = list->findItems(name, Qt::MatchExactly);
    ASSERT_EQ(found.size(), 1) << name.toStdString();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(found.first()).center());
}

QTreeWidgetItem* folderEntry(FolderList* list, const QString& text) {
    const QList<QTreeWidgetItem*> found = list->findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
    EXPECT_EQ(found.size(), 1) << text.toStdString();
    return found.value(0);
}

// "Symbol -> name" of every security in the folder, and its records' first and last dates.
QStringList stored(const QString& folder) {
    QStringList out;
    SecurityReader reader;
    reader.OpenFolder(folder);
    while (reader.GetSecuritiesRemaining() >= 1) {
        reader.NextSecurity();
        out << QStringLiteral("%1 %2").arg(reader.GetSymbol(), reader.GetName());
    }
    reader.CloseFolder();
    out.sort();
    return out;
}

std::vector<qint32> datesOf(const QString& folder, const QString& symbol) {
    std::vector<qint32> dates;
    for (const Rec& r : readBack(folder, symbol))
        dates.push_back(r.date);
    return dates;
}

class Catalogue : public SheetFixture {
protected:
    LocaleGuard locale{QStringLiteral("en_GB")};
    QString data;   // a store of three securities, one level under `temp`
    QString bare;   // a folder beside it with no store

    void SetUp() override {
        data = temp.sub(QStringLiteral("data"));
        bare = temp.sub(QStringLiteral("bare"));
        makeSecurity(data, "AAA", "Alpha Mining", series(3));
        makeSecurity(data, "BBB", "Beta Foods", series(5));   // 2, 5, 6, 7, 8 January 2004
        makeSecurity(data, "CCC", "Gamma Rail", series(2, QDate(2010, 3, 1)));
        sharedState().LastFolder = data;
    }

    template <typename Dialog>
    static std::unique_ptr<Dialog> shown() {
        auto dialog = std::make_unique<Dialog>();
        dialog->show();
        QApplication::processEvents();
        return dialog;
    }
};

// --- the walk, both screens alike ---

TEST_F(Catalogue, TheWalkStartsAtLastFolderAndListsOnlyWhenTheFolderChanges) {
    auto adjust = shown<AdjustSecurityDialog>();
    EXPECT_EQ(adjust->folderList->path(), QDir(data).absolutePath());
    EXPECT_EQ(adjust->securitiesList->count(), 0) << "nothing listed before the folder changes";
    EXPECT_TRUE(adjust->changeButton->isEnabled());
    EXPECT_TRUE(adjust->deleteButton->isEnabled());
    EXPECT_EQ(adjust->driveList->itemData(0).toString(), "/");
    EXPECT_NE(adjust->driveList->findData(QDir::cleanPath(QDir::homePath())), -1) << "the home folder is offered";

    // Up to the parent by Enter on its entry, down into the folder without a store by a double click.
    FolderList* folders = adjust->folderList;
    folders->setCurrentItem(folderEntry(folders, QDir(temp.path()).dirName()));
    QTest::keyClick(folders, Qt::Key_Return);
    EXPECT_EQ(folders->path(), QDir(temp.path()).absolutePath());
    QTreeWidgetItem* into = folderEntry(folders, "bare");
    ASSERT_NE(into, nullptr);
    const QPoint at = folders->visualItemRect(into).center();
    QTest::mouseClick(folders->viewport(), Qt::LeftButton, {}, at);
    EXPECT_EQ(folders->path(), QDir(temp.path()).absolutePath()) << "a click only selects";
    QTest::mouseDClick(folders->viewport(), Qt::LeftButton, {}, at);
    EXPECT_EQ(folders->path(), QDir(bare).absolutePath());
    EXPECT_EQ(adjust->securitiesList->count(), 0);
    EXPECT_FALSE(adjust->changeButton->isEnabled());
    EXPECT_FALSE(adjust->deleteButton->isEnabled());

    folders->setPath(data);
    EXPECT_EQ(names(adjust->securitiesList), (QStringList{"Alpha Mining", "Beta Foods", "Gamma Rail"}));
    EXPECT_TRUE(adjust->changeButton->isEnabled());
    EXPECT_TRUE(adjust->deleteButton->isEnabled());

    // Choosing a drive puts the folder list on its root and lists that.
    const QString home = QDir::cleanPath(QDir::homePath());
    adjust->driveList->setCurrentIndex(adjust->driveList->findData(home));
    EXPECT_EQ(folders->path(), home);
    EXPECT_FALSE(adjust->changeButton->isEnabled());
    adjust->driveList->setCurrentIndex(0);
    EXPECT_EQ(folders->path(), "/");
    folders->setPath(data);
    EXPECT_EQ(adjust->driveList->currentIndex(), 0) << "the drive list follows the folder";

    auto remove = shown<DeleteDataDialog>();
    expectControlsLaidOut(adjust.get());
    expectControlsLaidOut(remove.get());
    EXPECT_EQ(remove->securitiesList->count(), 0);
    remove->folderList->setPath(bare);
    EXPECT_FALSE(remove->deleteButton->isEnabled());
    remove->folderList->setPath(data);
    EXPECT_EQ(remove->securitiesList->count(), 3);
    EXPECT_TRUE(remove->deleteButton->isEnabled());
    EXPECT_TRUE(platform.boxes.isEmpty());
}

// Typed letters become capitals; pasted text stays as it was.
TEST_F(Catalogue, SymbolBoxesTurnTypedLettersIntoCapitals) {
    auto adjust = shown<AdjustSecurityDialog>();
    auto remove = shown<DeleteDataDialog>();
    for (QLineEdit* box : {adjust->symbolEdit, remove->symbolEdit}) {
        SCOPED_TRACE(box->window()->objectName().toStdString());
        QTest::keyClicks(box, "ab.1c");
        EXPECT_EQ(box->text(), "AB.1C");
        QGuiApplication::clipboard()->setText("xy");
        box->paste();
        EXPECT_EQ(box->text(), "AB.1Cxy");
    }
    QTest::keyClicks(adjust->nameEdit, "ab");
    EXPECT_EQ(adjust->nameEdit->text(), "ab");
}

// --- Adjust Security ---

TEST_F(Catalogue, ChangeBeforeAnyClickShowsTheStoresFailure) {
    auto dialog = shown<AdjustSecurityDialog>();
    EXPECT_EQ(dialog->windowTitle(), "Adjust Security");
    EXPECT_EQ(dialog->changeButton->text(), "&Change");
    EXPECT_EQ(dialog->deleteButton->text(), "&Delete Security");
    EXPECT_EQ(dialog->closeButton->text(), "&Close");
    EXPECT_EQ(dialog->firstDateEdit->text(), "23/11/2026") << "today's date until an entry is clicked";

    dialog->changeButton->click();
    expectBox(0, QString(), MsgIcon::None, "Brindlemark v6");
    EXPECT_EQ(platform.boxes[0].buttons, MsgButtons::Ok);
    EXPECT_EQ(dialog->securitiesList->count(), 0) << "not listed anew";
    EXPECT_EQ(stored(data), (QStringList{"AAA Alpha Mining", "BBB Beta Foods", "CCC Gamma Rail"}));
}

// A click fills the boxes; a change of the name alone keeps the symbol; the boxes stay, and a
// second Change still names the symbol clicked, so a third one no longer finds it.
TEST_F(Catalogue, ChangeRenamesTheSecurityClickedLast) {
    auto dialog = shown<AdjustSecurityDialog>();
    dialog->folderList->setPath(data);
    clickEntry(dialog->securitiesList, "Alpha Mining");
    EXPECT_EQ(dialog->nameEdit->text(), "Alpha Mining");
    QTest::keyClick(dialog->securitiesList, Qt::Key_Down);   // a key picks as a click does
    EXPECT_EQ(dialog->nameEdit->text(), "Beta Foods");
    EXPECT_EQ(dialog->symbolEdit->text(), "BBB");
    EXPECT_EQ(dialog->firstDateEdit->text(), "02/01/2004");

    dialog->nameEdit->setText("  Beta Farms ");
    dialog->changeButton->click();
    EXPECT_EQ(stored(data), (QStringList{"AAA Alpha Mining", "BBB Beta Farms", "CCC Gamma Rail"}));
    EXPECT_EQ(names(dialog->securitiesList), (QStringList{"Alpha Mining", "Beta Farms", "Gamma Rail"}));
    EXPECT_TRUE(dialog->securitiesList->selectedItems().isEmpty());
    EXPECT_EQ(dialog->nameEdit->text(), "  Beta Farms ");
    EXPECT_EQ(dialog->symbolEdit->text(), "BBB");
    EXPECT_EQ(dialog->firstDateEdit->text(), "02/01/2004");

    dialog->symbolEdit->setText(" BFM ");
    dialog->changeButton->click();
    EXPECT_EQ(stored(data), (QStringList{"AAA Alpha Mining", "BFM Beta Farms", "CCC Gamma Rail"}));
    EXPECT_EQ(datesOf(data, "BFM").size(), 5u) << "the records go with the security";
    EXPECT_TRUE(platform.boxes.isEmpty());

    dialog->changeButton->click();
    EXPECT_EQ(platform.boxes.size(), 1) << "BBB is gone";
    EXPECT_EQ(stored(data), (QStringList{"AAA Alpha Mining", "BFM Beta Farms", "CCC Gamma Rail"}));
}

// The symbol in the box decides, not the entry clicked; nothing is asked or told.
TEST_F(Catalogue, DeleteSecurityTakesTheTypedSymbol) {
    auto dialog = shown<AdjustSecurityDialog>();
    dialog->folderList->setPath(data);
    clickEntry(dialog->securitiesList, "Alpha Mining");
    dialog->symbolEdit->clear();
    QTest::keyClicks(dialog->symbolEdit, "ccc");
    dialog->deleteButton->click();
    EXPECT_EQ(stored(data), (QStringList{"AAA Alpha Mining", "BBB Beta Foods"}));
    EXPECT_EQ(names(dialog->securitiesList), (QStringList{"Alpha Mining", "Beta Foods"}));
    EXPECT_EQ(dialog->nameEdit->text(), "Alpha Mining");
    EXPECT_EQ(dialog->symbolEdit->text(), "CCC");

    dialog->symbolEdit->setText("ZZZ");
    dialog->deleteButton->click();
    EXPECT_EQ(stored(data), (QStringList{"AAA Alpha Mining", "BBB Beta Foods"}));
    EXPECT_TRUE(platform.boxes.isEmpty());

    // The Change that follows still renames the security clicked.
    dialog->nameEdit->setText("Alpha Metals");
    dialog->symbolEdit->setText("AAA");
    dialog->changeButton->click();
    EXPECT_EQ(stored(data), (QStringList{"AAA Alpha Metals", "BBB Beta Foods"}));
}

// --- Delete Data ---

struct DateCase {
    const char* locale;
    const char* today;      // the date box when the screen opens
    const char* proposed;   // the last date of Beta Foods
    const char* chosen;     // 6 January 2004 as a user of the locale types it
};

class DeleteDataByLocale : public Catalogue, public ::testing::WithParamInterface<DateCase> {};

// The proposed date takes the whole span; a typed date takes the records up to it, read under
// the regional settings.
TEST_P(DeleteDataByLocale, DeletesFromTheFirstDateToTheDateInTheBox) {
    LocaleGuard pinned(QString::fromLatin1(GetParam().locale));
    auto dialog = shown<DeleteDataDialog>();
    EXPECT_EQ(dialog->windowTitle(), "Delete Data");
    EXPECT_EQ(dialog->deleteButton->text(), "&Delete");
    EXPECT_EQ(dialog->closeButton->text(), "Close");
    EXPECT_TRUE(dialog->deleteBeforeOption->isChecked());
    EXPECT_EQ(dialog->deleteAfterOption->text(), "Delete After");
    EXPECT_EQ(dialog->dateEdit->text(), GetParam().today);

    dialog->folderList->setPath(data);
    clickEntry(dialog->securitiesList, "Beta Foods");
    EXPECT_EQ(dialog->nameEdit->text(), "Beta Foods");
    EXPECT_EQ(dialog->symbolEdit->text(), "BBB");
    EXPECT_EQ(dialog->dateEdit->text(), GetParam().proposed);

    dialog->dateEdit->setText(GetParam().chosen);
    dialog->deleteButton->click();
    EXPECT_EQ(datesOf(data, "BBB"), (std::vector<qint32>{20040107, 20040108}));
    EXPECT_EQ(dialog->dateEdit->text(), GetParam().chosen);

    clickEntry(dialog->securitiesList, "Alpha Mining");
    dialog->deleteButton->click();
    EXPECT_TRUE(datesOf(data, "AAA").empty());
    EXPECT_EQ(stored(data), (QStringList{"AAA Alpha Mining", "BBB Beta Foods", "CCC Gamma Rail"})) << "the securities stay";
    EXPECT_EQ(datesOf(data, "CCC").size(), 2u);
    EXPECT_TRUE(platform.boxes.isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Locales, DeleteDataByLocale,
                         ::testing::Values(DateCase{"en_GB", "23/11/2026", "08/01/2004", "06/01/2004"},
                                           DateCase{"en_US", "11/23/2026", "1/8/2004", "1/6/04"}),
                         [](const auto& param) { return std::string(param.param.locale); });

// A date before the first, "Delete After", a box that holds no date, a name the folder lacks:
// nothing is deleted and nothing is told.
TEST_F(Catalogue, DeleteDataThatDeletesNothing) {
    auto dialog = shown<DeleteDataDialog>();
    dialog->folderList->setPath(data);
    clickEntry(dialog->securitiesList, "Beta Foods");
    const std::vector<qint32> all = datesOf(data, "BBB");

    dialog->dateEdit->setText("31/12/2003");
    dialog->deleteButton->click();
    EXPECT_EQ(datesOf(data, "BBB"), all) << "the range ends before it starts";

    dialog->dateEdit->setText("08/01/2004");
    dialog->deleteAfterOption->click();
    dialog->deleteButton->click();
    EXPECT_EQ(datesOf(data, "BBB"), all) << "Delete After";

    dialog->deleteBeforeOption->click();
    dialog->dateEdit->setText("next week");
    dialog->deleteButton->click();
    EXPECT_EQ(datesOf(data, "BBB"), all) << "no date";

    dialog->dateEdit->setText("08/01/2004");
    dialog->nameEdit->clear();
    dialog->deleteButton->click();
    EXPECT_EQ(datesOf(data, "BBB"), all) << "no name";
    EXPECT_TRUE(platform.boxes.isEmpty());

    dialog->nameEdit->setText(" Beta Foods ");
    dialog->deleteButton->click();
    EXPECT_TRUE(datesOf(data, "BBB").empty()) << "the name box decides, trimmed";
}

} // namespace
