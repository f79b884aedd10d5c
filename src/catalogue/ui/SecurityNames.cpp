#include "catalogue/ui/SecurityNames.h"

#include "frame/Failure.h"
#include "store/SecurityReader.h"

#include <QEvent>
#include <QListWidget>

void ListSecurityNames(QListWidget* list, const QString& folder) {
    list->clear();
    SecurityReader reader;
    try {
        reader.OpenFolder(folder);
        while (reader.GetSecuritiesRemaining() >= 1) {
            reader.NextSecurity();
            list->addItem(reader.GetName().trimmed());
        }
        reader.CloseFolder();
    } catch (const Failure&) {
        passOver([&] { reader.CloseFolder(); });
    }
}

namespace {

// Tells a selection moved by a key from one the program moved: a key press arms it; its release, a
// mouse press or the focus coming or going disarms it. A Tab released in the next control, and the
// list putting its cursor on the first line as the focus comes back, pick nothing.
class PickWatcher : public QObject {
public:
    PickWatcher(QListWidget* list, std::function<void()> picked)
        : QObject(list), list_(list), viewport_(list->viewport()), picked_(std::move(picked)) {
        list->installEventFilter(this);
        viewport_->installEventFilter(this);
        connect(list, &QListWidget::itemClicked, this, [this] { picked_(); });
        connect(list, &QListWidget::currentRowChanged, this, [this](int row) {
            if (keying_ && row >= 0)
                picked_();
        });
        // Space (or Ctrl+Space) selects the line under the cursor without moving it: a pick too.
        connect(list, &QListWidget::itemSelectionChanged, this, [this] {
            if (keying_ && list_->currentRow() >= 0 && list_->currentItem()->isSelected())
                picked_();
        });
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == list_ && event->type() == QEvent::KeyPress)
            keying_ = true;
        else if (watched == list_ && (event->type() == QEvent::KeyRelease || event->type() == QEvent::FocusOut
                                      || event->type() == QEvent::FocusIn))
            keying_ = false;
        else if (watched == viewport_ && event->type() == QEvent::MouseButtonPress)
            keying_ = false;
        return false;
    }

private:
    // Compared, never called: the viewport goes before this watcher when the list is destroyed,
    // and its last events come while the list is half taken down.
    QListWidget* list_;
    QObject* viewport_;
    std::function<void()> picked_;
    bool keying_ = false;
};

} // namespace

void OnSecurityPicked(QListWidget* list, std::function<void()> picked) { new PickWatcher(list, std::move(picked)); }
