// SPDX-License-Identifier: GPL-3.0-or-later
// A program with one text field of the kind its first argument names, holding the text of its second.
#include "DeafField.h"

#include <QApplication>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QTimer>
#include <QVBoxLayout>

#include <csignal>
#include <utility>

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

/// Takes back every change that its user did not type or paste, like a page whose script owns the text.
class ResettingPlainTextEdit : public QPlainTextEdit
{
public:
    explicit ResettingPlainTextEdit(const QString &text)
        : QPlainTextEdit(text)
        , m_text(text)
    {
        connect(this, &QPlainTextEdit::textChanged, this, [this] {
            if (m_isUsersDoing)
                m_text = toPlainText();
            else if (toPlainText() != m_text)
                setPlainText(m_text);
        });
    }

protected:
    void insertFromMimeData(const QMimeData *source) override
    {
        m_isUsersDoing = true;
        QPlainTextEdit::insertFromMimeData(source);
        m_isUsersDoing = false;
    }

    void keyPressEvent(QKeyEvent *event) override
    {
        m_isUsersDoing = true;
        QPlainTextEdit::keyPressEvent(event);
        m_isUsersDoing = false;
    }

private:
    QString m_text;
    bool m_isUsersDoing = false;
};

/// Stops its program as soon as somebody else has changed the text, before that one has heard of it.
class StoppingPlainTextEdit : public QPlainTextEdit
{
public:
    explicit StoppingPlainTextEdit(const QString &text)
        : QPlainTextEdit(text)
    {
        connect(this, &QPlainTextEdit::textChanged, this, [this] {
            if (!std::exchange(m_hasStopped, true))
                std::raise(SIGSTOP);
        });
    }

private:
    bool m_hasStopped = false;
};

/// Several fields in a program that changes when its user leaves it.
void changeWhenLeft(const QString &kind, QWidget *window, QWidget *field, QWidget *second)
{
    QObject::connect(qApp, &QApplication::applicationStateChanged, window, [=](Qt::ApplicationState state) {
        if (state == Qt::ApplicationActive)
            return;
        if (kind == QLatin1String("two"))
            second->setFocus();
        if (kind == QLatin1String("hiding"))
            field->hide();
        if (kind == QLatin1String("closing")) {
            second->setParent(nullptr);
            second->setWindowTitle(QStringLiteral("second window"));
            second->resize(400, 200);
            second->show();
            window->close();
        }
    });
}

QWidget *makeField(const QString &kind, const QString &text)
{
    if (kind == QLatin1String("plain") || kind == QLatin1String("readonly")) {
        auto *field = new QPlainTextEdit(text);
        field->setReadOnly(kind == QLatin1String("readonly"));
        return field;
    }
    if (kind == QLatin1String("hiding"))
        return new QPlainTextEdit(text);
    if (kind == QLatin1String("short"))
        return new ShortPlainTextEdit(text);
    if (kind == QLatin1String("stopping"))
        return new StoppingPlainTextEdit(text);
    if (kind == QLatin1String("deaf"))
        return new DeafField(text);
    if (kind == QLatin1String("resetting"))
        return new ResettingPlainTextEdit(text);
    auto *field = new QLineEdit(text);
    if (kind == QLatin1String("password"))
        field->setEchoMode(QLineEdit::Password);
    return field;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    DeafField::installAccessibility();
    QWidget window;
    QVBoxLayout layout(&window);
    const QString kind = application.arguments().value(1);
    QWidget *field = makeField(kind, application.arguments().value(2));
    layout.addWidget(field);
    if (kind == QLatin1String("two") || kind == QLatin1String("hiding") || kind == QLatin1String("closing")) {
        auto *second = new QLineEdit;
        layout.addWidget(second);
        changeWhenLeft(kind, &window, field, second);
    }
    window.resize(500, 300);
    window.show();
    field->setFocus();
    return QApplication::exec();
}
