#include "frame/ui/CapitalsAsTyped.h"

#include <QEvent>
#include <QKeyEvent>
#include <QLineEdit>

namespace {

class CapitalsFilter : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::KeyPress)
            return false;
        auto key = static_cast<QKeyEvent*>(event);
        const QString text = key->text();
        if (key->modifiers() & (Qt::ControlModifier | Qt::MetaModifier))
            return false;
        const QString upper = text.toUpper();
        if (text.isEmpty() || upper == text)
            return false;
        auto edit = qobject_cast<QLineEdit*>(watched);
        if (!edit || edit->isReadOnly())
            return false;
        edit->insert(upper);   // replaces a selection as the typed letter would
        return true;
    }
};

} // namespace

void TypeInCapitals(QLineEdit* edit) { edit->installEventFilter(new CapitalsFilter(edit)); }
