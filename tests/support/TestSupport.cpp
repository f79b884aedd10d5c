#include "support/TestSupport.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCoreApplication>
#include <QAbstractItemView>
#include <QComboBox>
#include <QDirIterator>
#include <QLabel>
#include <QLayout>
#include <QProgressBar>
#include <QLineEdit>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>

#include <functional>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

// The shared fixtures lie beside the repository: found from the source tree the tests were built
// from, else upwards from the test program, so a build folder anywhere (a preset's, a copy's) finds them.
static QString fixturesFolder() {
    static const QString found = [] {
        QStringList places{QStringLiteral(BM_FIXTURES_DIR)};
        for (QDir at(QCoreApplication::applicationDirPath());; ) {
            places << at.filePath(QStringLiteral("../shared/fixtures")) << at.filePath(QStringLiteral("shared/fixtures"));
            if (!at.cdUp())
                break;
        }
        for (const QString& place : places)
            if (QFileInfo(place + QStringLiteral("/metastock")).isDir())
                return QDir(place).absolutePath();
        return QString();
    }();
    return found;
}

QString sharedFixture(const QString& relativePath) {
    return fixturesFolder().isEmpty() ? QString() : QDir(fixturesFolder()).filePath(relativePath);
}

QString metastockFixture(const QString& name) {
    const QString path = sharedFixture(QStringLiteral("metastock/") + name);
    return !path.isEmpty() && QFileInfo(path).isDir() ? QDir(path).absolutePath() : QString();
}

bool copyFixture(const QString& name, const QString& target) {
    const QString source = metastockFixture(name);
    if (source.isEmpty())
        return false;
    QDir().mkpath(target);
    QDirIterator it(source, QDir::Files);
    while (it.hasNext()) {
        it.next();
        const QString to = QDir(target).filePath(it.fileName());
        QFile::remove(to);
        if (!QFile::copy(it.filePath(), to))
            return false;
        QFile(to).setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    }
    return true;
}

void writeTextFile(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << path.toStdString();
    file.write(bytes);
}

QByteArray readFileBytes(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

void expectControlsLaidOut(QWidget* screen) {
    // A caption counts by its text where it has no name.
    const auto label = [](QWidget* w) { auto l = qobject_cast<QLabel*>(w); return l ? l->text() : QString(); };
    const auto isControl = [&](QWidget* w) {
        if (w->objectName().startsWith(u"qt_"))
            return false;
        if (!label(w).isEmpty())
            return true;
        return !w->objectName().isEmpty() &&
               (qobject_cast<QLineEdit*>(w) || qobject_cast<QAbstractButton*>(w) || qobject_cast<QLabel*>(w) ||
                qobject_cast<QAbstractItemView*>(w) || qobject_cast<QComboBox*>(w) || qobject_cast<QProgressBar*>(w));
    };
    const auto nameOf = [&](QWidget* w) { return (w->objectName().isEmpty() ? label(w) : w->objectName()).toStdString(); };
    // A control that no layout took in has no screen at all.
    for (QWidget* w : QApplication::allWidgets())
        if (!w->parentWidget() && isControl(w))
            ADD_FAILURE() << nameOf(w) << " is on no screen";
    QList<QWidget*> controls;
    for (QWidget* control : screen->findChildren<QWidget*>())
        if (isControl(control) && control->isVisibleTo(screen))
            controls << control;
    EXPECT_FALSE(controls.isEmpty()) << nameOf(screen);
    // Where a control's parent lays out its children, the control is one of them.
    const std::function<bool(QLayout*, QWidget*)> holds = [&](QLayout* layout, QWidget* w) {
        for (int i = 0; i < layout->count(); ++i)
            if (layout->itemAt(i)->widget() == w || (layout->itemAt(i)->layout() && holds(layout->itemAt(i)->layout(), w)))
                return true;
        return false;
    };
    for (QWidget* control : controls)
        if (QLayout* layout = control->parentWidget()->layout())
            EXPECT_TRUE(holds(layout, control)) << nameOf(control) << " is in no layout";
    const auto area = [screen](QWidget* w) { return QRect(w->mapTo(screen, QPoint(0, 0)), w->size()); };
    for (QWidget* a : controls) {
        EXPECT_TRUE(screen->rect().contains(area(a))) << nameOf(a) << " lies outside";
        for (QWidget* b : controls)
            if (a < b && !a->isAncestorOf(b) && !b->isAncestorOf(a)) {
                EXPECT_FALSE(area(a).intersects(area(b)))
                    << nameOf(a) << " overlaps " << nameOf(b);
            }
    }
}

ForeignLockHolder::ForeignLockHolder(const QString& folder, const QString& host) {
    const QByteArray path = QFile::encodeName(QDir(folder).filePath(QStringLiteral("brindlemark.lck")));
    const QByteArray holder = "brindlemark-cli 4242 " + (host.isEmpty() ? QSysInfo::machineHostName() : host).toUtf8() + '\n';
    int ready[2], release[2];
    if (::pipe(ready) != 0 || ::pipe(release) != 0) {
        ADD_FAILURE() << "no pipe for the lock holder";
        return;
    }
    pid_ = ::fork();
    if (pid_ == 0) {
        // Only system calls from here: the child of a threaded process.
        ::close(ready[0]);
        ::close(release[1]);
        const int fd = ::open(path.constData(), O_RDWR | O_CREAT, 0644);
        if (fd < 0 || ::flock(fd, LOCK_EX | LOCK_NB) != 0 || ::pwrite(fd, holder.constData(), size_t(holder.size()), 0) < 0)
            ::_exit(1);
        char byte = 1;
        if (::write(ready[1], &byte, 1) != 1)
            ::_exit(1);
        while (::read(release[0], &byte, 1) > 0) {
        }
        ::_exit(0);
    }
    ::close(ready[1]);
    ::close(release[0]);
    release_ = release[1];
    char byte = 0;
    if (::read(ready[0], &byte, 1) != 1)
        ADD_FAILURE() << "the lock holder did not take the lock of " << path.constData();
    ::close(ready[0]);
}

ForeignLockHolder::~ForeignLockHolder() {
    if (release_ >= 0)
        ::close(release_);
    if (pid_ > 0)
        ::waitpid(pid_, nullptr, 0);
}
