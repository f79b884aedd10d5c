// Adjust Security and Delete Data: walking to a folder with the drive and folder lists, renaming
// and deleting a security, and deleting a security's records up to a date.

#include "CatalogueKit.h"

#include "catalogue/ui/AdjustSecurityDialog.h"
#include "catalogue/ui/DeleteDataDialog.h"
#include "frame/ProgramState.h"
#include "frame/ui/DriveList.h"
#include "frame/ui/FolderList.h"
#include "store/StoreCheck.h"

#include <QClipboard>
#include <QComboBox>
#include <QGuiApplication>
#include <QRadioButton>
#include <QScreen>

using namespace sheettest;

namespace {

class Catalogue : public SheetFixture {
protected:
    QString data;   // a store of three securities, one level under `temp`
    QString bare;   // a folder beside it with no store
    const QStringList all = {"AAA Alpha Mining", "BBB Beta Foods", "CCC Gamma Rail"};

    void SetUp() override {
        bare = temp.sub("bare");
        data = filled("data");
        sharedState().LastFolder = data;
    }
    QString filled(const QString& name) {
        const QString folder = temp.sub(name);
        makeSecurity(folder, "AAA", "Alpha Mining", series(3));
        makeSecurity(folder, "BBB", "Beta Foods", series(5));   // 2, 5, 6, 7, 8 January 2004
        makeSecurity(folder, "CCC", "Gamma Rail", series(2, QDate(2010, 3, 1)));
        return folder;
    }
};

// Both screens start at LastFolder and list only once the folder changes; a folder without a store
// lists nothing and turns the buttons off; a drive puts the folder list on its root.
TEST_F(Catalogue, TheWalkStartsAtLastFolderAndListsOnlyWhenTheFolderChanges) {
    auto adjust = shown<AdjustSecurityDialog>();
    FolderList* folders = adjust->folderList;
    EXPECT_EQ(folders->path(), QDir(data).absolutePath());
    EXPECT_EQ(adjust->securitiesList->count(), 0) << "nothing listed before the folder changes";
    EXPECT_TRUE(adjust->changeButton->isEnabled() && adjust->deleteButton->isEnabled());
    const QString home = QDir::cleanPath(QDir::homePath());
    EXPECT_EQ(adjust->driveList->itemData(0).toString(), "/");
    EXPECT_EQ(adjust->driveList->itemText(adjust->driveList->findData(home)), home + "  [Home]") << "the home folder is offered";

    // Up to the parent by Enter on its entry, down into the folder without a store by a double click.
    const auto entry = [&](const QString& text) { return folders->findItems(text, Qt::MatchExactly | Qt::MatchRecursive).value(0); };
    folders->setCurrentItem(entry(QDir(temp.path()).dirName()));
    QTest::keyClick(folders, Qt::Key_Right);
    EXPECT_EQ(folders->path(), QDir(data).absolutePath()) << "only Enter goes into a folder";
    QTest::keyClick(folders, Qt::Key_Down);
    EXPECT_NE(folders->currentItem(), entry(QDir(temp.path()).dirName())) << "the arrows move through the list";
    folders->setCurrentItem(entry(QDir(temp.path()).dirName()));
    QTest::keyClick(folders, Qt::Key_Return);
    EXPECT_EQ(folders->path(), QDir(temp.path()).absolutePath());
    ASSERT_NE(entry("bare"), nullptr);
    const QPoint at = folders->visualItemRect(entry("bare")).center();
    QTest::mouseClick(folders->viewport(), Qt::LeftButton, {}, at);
    EXPECT_EQ(folders->path(), QDir(temp.path()).absolutePath()) << "a click only selects";
    QTest::mouseDClick(folders->viewport(), Qt::LeftButton, {}, at);
    EXPECT_EQ(folders->path(), QDir(bare).absolutePath());
    EXPECT_EQ(folders->currentIndex().data().toString(), "bare") << "the folder gone into is the one highlighted";
    EXPECT_EQ(adjust->securitiesList->count(), 0);
    EXPECT_FALSE(adjust->changeButton->isEnabled() || adjust->deleteButton->isEnabled());

    folders->setPath(data);
    EXPECT_EQ(lines(adjust->securitiesList), (QStringList{"Alpha Mining", "Beta Foods", "Gamma Rail"}));
    EXPECT_TRUE(adjust->changeButton->isEnabled() && adjust->deleteButton->isEnabled());
    adjust->driveList->setCurrentIndex(adjust->driveList->findData(home));
    EXPECT_EQ(folders->path(), home);
    EXPECT_FALSE(adjust->changeButton->isEnabled());
    adjust->driveList->setCurrentIndex(0);
    EXPECT_EQ(folders->path(), "/");
    folders->setPath(data);
    EXPECT_EQ(adjust->driveList->currentIndex(), 0) << "the drive list follows the folder";

    auto remove = shown<DeleteDataDialog>();
    // Each screen stays where the user moved it when shown again.
    for (QDialog* d : std::initializer_list<QDialog*>{adjust.get(), remove.get()}) {
        d->move(d->pos() - QPoint(40, 30));
        const QPoint moved = d->pos();
        d->hide();
        d->show();
        EXPECT_EQ(d->pos(), moved);
    }
    EXPECT_EQ(remove->securitiesList->count(), 0);
    remove->folderList->setPath(bare);
    EXPECT_FALSE(remove->deleteButton->isEnabled());
    const QString one = temp.sub("one");
    makeSecurity(one, "ONE", "One", {});
    remove->folderList->setPath(one);
    adjust->folderList->setPath(one);
    EXPECT_TRUE(remove->deleteButton->isEnabled() && adjust->changeButton->isEnabled() && adjust->deleteButton->isEnabled())
        << "one security is enough";
    remove->folderList->setPath(data);
    EXPECT_EQ(remove->securitiesList->count(), 3);

    // Typed letters in a symbol box become capitals; pasted text and the name stay as they were.
    for (QLineEdit* box : {adjust->symbolEdit, remove->symbolEdit, adjust->nameEdit}) {
        QTest::keyClicks(box, "ab.1c");
        QGuiApplication::clipboard()->setText("xy");
        box->paste();
        EXPECT_EQ(box->text(), box == adjust->nameEdit ? "ab.1cxy" : "AB.1Cxy");
    }
    EXPECT_TRUE(platform.boxes.isEmpty());
}

// Before any click the date box shows today, and Change shows the store's failure. A click fills the
// boxes; a change of the name alone keeps the symbol; the boxes stay, and a second Change still names
// the symbol clicked, so a third one no longer finds it.
TEST_F(Catalogue, ChangeRenamesTheSecurityClickedLastAndDeleteTakesTheTypedSymbol) {
    auto dialog = shown<AdjustSecurityDialog>();
    EXPECT_EQ(dialog->firstDateEdit->text(), "23/11/2026");
    dialog->changeButton->click();
    expectBox(0, QString(), MsgIcon::None, "Brindlemark v6");
    EXPECT_EQ(platform.boxes[0].buttons, MsgButtons::Ok);
    EXPECT_EQ(stored(data), all);
    platform.boxes.clear();

    dialog->folderList->setPath(data);
    clickEntry(dialog->securitiesList, "Alpha Mining");
    EXPECT_EQ(dialog->nameEdit->text(), "Alpha Mining");
    QTest::keyClick(dialog->securitiesList, Qt::Key_Down);   // a key picks as a click does
    const auto boxes = [&] { return QStringList{dialog->nameEdit->text(), dialog->symbolEdit->text(), dialog->firstDateEdit->text()}; };
    EXPECT_EQ(boxes(), (QStringList{"Beta Foods", "BBB", "02/01/2004"}));
    QTest::keyClick(dialog->securitiesList, Qt::Key_Up);
    EXPECT_EQ(dialog->nameEdit->text(), "Alpha Mining") << "the first row picks too";
    QTest::keyClick(dialog->securitiesList, Qt::Key_Down);

    dialog->nameEdit->setText("  Beta Farms ");
    dialog->changeButton->click();
    EXPECT_EQ(stored(data), (QStringList{"AAA Alpha Mining", "BBB Beta Farms", "CCC Gamma Rail"}));
    EXPECT_EQ(lines(dialog->securitiesList), (QStringList{"Alpha Mining", "Beta Farms", "Gamma Rail"}));
    EXPECT_TRUE(dialog->securitiesList->selectedItems().isEmpty());
    EXPECT_EQ(boxes(), (QStringList{"  Beta Farms ", "BBB", "02/01/2004"}));
    // Tab out of the list and back puts its cursor on the first line: that is no pick.
    QTest::keyPress(dialog->securitiesList, Qt::Key_Tab);
    QTest::keyRelease(QApplication::focusWidget(), Qt::Key_Tab);
    dialog->securitiesList->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(boxes(), (QStringList{"  Beta Farms ", "BBB", "02/01/2004"}));
    QTest::keyClick(dialog->securitiesList, Qt::Key_Space);   // selects the line under the cursor: a pick
    EXPECT_EQ(dialog->nameEdit->text(), "Alpha Mining");
    clickEntry(dialog->securitiesList, "Beta Farms");

    dialog->symbolEdit->setText(" BFM ");
    dialog->changeButton->click();
    EXPECT_EQ(stored(data), (QStringList{"AAA Alpha Mining", "BFM Beta Farms", "CCC Gamma Rail"}));
    EXPECT_EQ(readDates(data, "BFM").size(), 5u) << "the records go with the security";
    EXPECT_TRUE(platform.boxes.isEmpty());
    dialog->changeButton->click();
    EXPECT_EQ(platform.boxes.size(), 1) << "BBB is gone";
    EXPECT_EQ(stored(data), (QStringList{"AAA Alpha Mining", "BFM Beta Farms", "CCC Gamma Rail"}));

    // Delete takes the symbol in the box, not the entry clicked; nothing is asked or told. The Change
    // that follows still renames the security clicked.
    clickEntry(dialog->securitiesList, "Alpha Mining");
    dialog->symbolEdit->clear();
    QTest::keyClicks(dialog->symbolEdit, "ccc");
    dialog->deleteButton->click();
    const QStringList two = {"AAA Alpha Mining", "BFM Beta Farms"};
    EXPECT_EQ(stored(data), two);
    EXPECT_EQ(lines(dialog->securitiesList), (QStringList{"Alpha Mining", "Beta Farms"}));
    EXPECT_EQ(QStringList({dialog->nameEdit->text(), dialog->symbolEdit->text()}), (QStringList{"Alpha Mining", "CCC"}));
    dialog->symbolEdit->setText("ZZZ");
    dialog->deleteButton->click();
    EXPECT_EQ(stored(data), two);
    EXPECT_EQ(platform.boxes.size(), 1);
    dialog->nameEdit->setText("Alpha Metals");
    dialog->symbolEdit->setText("AAA");
    dialog->changeButton->click();
    EXPECT_EQ(stored(data), (QStringList{"AAA Alpha Metals", "BFM Beta Farms"}));
}

// The proposed date takes the whole span; a typed date takes the records up to it, read under the
// regional settings.
TEST_F(Catalogue, DeleteDataDeletesFromTheFirstDateToTheDateInTheBox) {
    const struct { const char* locale; const char* today; const char* proposed; const char* chosen; } cases[] = {
        {"en_GB", "23/11/2026", "08/01/2004", "06/01/2004"}, {"en_US", "11/23/2026", "1/8/2004", "1/6/04"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.locale);
        LocaleGuard pinned(c.locale);
        const QString data = filled(c.locale);
        auto dialog = shown<DeleteDataDialog>();
        EXPECT_TRUE(dialog->deleteBeforeOption->isChecked());
        EXPECT_EQ(dialog->dateEdit->text(), c.today);
        dialog->folderList->setPath(data);
        clickEntry(dialog->securitiesList, "Beta Foods");
        EXPECT_EQ(QStringList({dialog->nameEdit->text(), dialog->symbolEdit->text(), dialog->dateEdit->text()}),
                  (QStringList{"Beta Foods", "BBB", c.proposed}));

        dialog->dateEdit->setText(c.chosen);
        const auto held = readDates(data, "BBB");
        QTest::keyClick(dialog->dateEdit, Qt::Key_Return);
        EXPECT_EQ(readDates(data, "BBB"), held) << "Enter in the box deletes nothing";
        dialog->deleteButton->click();
        EXPECT_EQ(readDates(data, "BBB"), (std::vector<qint32>{20040107, 20040108}));
        { ForeignLockHolder other(data); }   // the open screen holds the folder no longer
        EXPECT_EQ(dialog->dateEdit->text(), c.chosen);
        clickEntry(dialog->securitiesList, "Alpha Mining");
        dialog->deleteButton->click();
        EXPECT_TRUE(readDates(data, "AAA").empty());
        EXPECT_EQ(stored(data), all) << "the securities stay";
        EXPECT_EQ(readDates(data, "CCC").size(), 2u);
        EXPECT_TRUE(platform.boxes.isEmpty());
        for (const auto& finding : StoreCheck::checkFolder(data))   // other programs read the dates from the index
            EXPECT_FALSE(finding.text.contains("the index gives")) << finding.text.toStdString();
    }
}

// A date before the first, "Delete After", a box that holds no date, a name the folder lacks:
// nothing is deleted and nothing is told. The name box decides, trimmed.
TEST_F(Catalogue, DeleteDataThatDeletesNothing) {
    auto dialog = shown<DeleteDataDialog>();
    dialog->folderList->setPath(data);
    clickEntry(dialog->securitiesList, "Beta Foods");
    const std::vector<qint32> before = readDates(data, "BBB");
    const struct { const char* date; bool after; const char* name; } cases[] = {
        {"31/12/2003", false, "Beta Foods"}, {"08/01/2004", true, "Beta Foods"}, {"next week", false, "Beta Foods"}, {"08/01/2004", false, ""}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.date) + (c.after ? " after " : " ") + c.name);
        dialog->dateEdit->setText(c.date);
        (c.after ? dialog->deleteAfterOption : dialog->deleteBeforeOption)->click();
        dialog->nameEdit->setText(c.name);
        dialog->deleteButton->click();
        EXPECT_EQ(readDates(data, "BBB"), before);
    }
    EXPECT_TRUE(platform.boxes.isEmpty());
    dialog->nameEdit->setText(" Beta Foods ");
    dialog->deleteButton->click();
    EXPECT_TRUE(readDates(data, "BBB").empty());
}

} // namespace
