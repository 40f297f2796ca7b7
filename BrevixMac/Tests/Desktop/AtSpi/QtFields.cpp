// SPDX-License-Identifier: GPL-3.0-or-later
// A program with one text field of the kind its first argument names, holding the text of its second.
#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTimer>
#include <QVBoxLayout>

namespace {

/// Keeps no more than twelve characters, like a form field with a limit.
class ShortPlainTextEdit : public QPlainTextEdit
{
public:
    explicit ShortPlainTextEdit(const QString &text)
        : QPlainTextEdit(text)
    {
        connect(this, &QPlainTextEdit::textChanged, this, [this] {
            constexpr qsizetype longest = 12;
            if (toPlainText().size() > longest)
                setPlainText(toPlainText().first(longest));
        });
    }
};

QWidget *makeField(const QString &kind, const QString &text)
{
    if (kind == QLatin1String("plain") || kind == QLatin1String("readonly")) {
        auto *field = new QPlainTextEdit(text);
        field->setReadOnly(kind == QLatin1String("readonly"));
        return field;
    }
    if (kind == QLatin1String("short"))
        return new ShortPlainTextEdit(text);
    auto *field = new QLineEdit(text);
    if (kind == QLatin1String("password"))
        field->setEchoMode(QLineEdit::Password);
    return field;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QWidget window;
    QVBoxLayout layout(&window);
    QWidget *field = makeField(application.arguments().value(1), application.arguments().value(2));
    layout.addWidget(field);
    window.resize(500, 300);
    window.show();
    field->setFocus();
    return QApplication::exec();
}
