// SPDX-License-Identifier: GPL-3.0-or-later
// From a key in a prompt's text to everything repainted: text with its marks, chips and preview.
#include "ScreenBenchmark.h"
#include "Screens/EditorStage.h"

#include "PreviewText.h"
#include "PromptTemplateParser.h"
#include "VariableFields.h"
#include "VariableForm.h"

namespace {

/// A text of @p size UTF-16 units in paragraphs of some 600, each with a variable.
QString promptOf(qsizetype size)
{
    const QString sentence =
        QStringLiteral("Rewrite the paragraph for {{reader_%1}} and keep the facts; be brief and friendly. ");
    QString text;
    int number = 0;
    while (text.size() < size) {
        text += sentence.arg(number % 40);
        if (++number % 8 == 0)
            text += u'\n';
    }
    return text.first(size);
}

/// Types letters in the middle of the text; what is reported once a frame is reported at every key.
void keystrokeInAPrompt(benchmark::State &state, EditorKind kind)
{
    PromptStage stage;
    stage.open(kind);
    stage.fill(QStringLiteral("Title"), promptOf(state.range(0)));
    PromptBodyTextView &body = stage.form().body();
    QTextCursor cursor = body.textCursor();
    cursor.setPosition(static_cast<int>(state.range(0) / 2));
    body.setTextCursor(cursor);
    int typed = 0;
    for (auto _ : state) {
        QTest::keyClick(&body, ++typed % 6 ? Qt::Key_A : Qt::Key_Space);
        body.report();
        QCoreApplication::sendPostedEvents();
        stage.top().repaint();
    }
}
BENCHMARK_CAPTURE(keystrokeInAPrompt, panel, EditorKind::panel)
    ->Arg(1 << 10)
    ->Arg(100 << 10)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keystrokeInAPrompt, window, EditorKind::window)
    ->Arg(100 << 10)
    ->Unit(benchmark::kMillisecond);

/// A prompt of @p size UTF-16 units with as many variables as a form asks for, the first one in every
/// sentence.
PromptItem promptWithManyVariables(qsizetype size)
{
    QString text;
    for (int number = 0; text.size() < size; ++number)
        text +=
            QStringLiteral("Tell {{name_%1}} what changed, in plain words and with the dates, and ask for "
                           "an answer by the end of the week; mention {{name_0}} too. ")
                .arg(number % VariableFields::mostFields) +
            (number % 6 == 5 ? QStringLiteral("\n") : QString());
    return {.id = QStringLiteral("p"), .title = QStringLiteral("T"), .text = text, .categoryID = {}};
}

/// Types a value into the first field of a form. The preview of a long prompt follows within a frame, by
/// itself.
void keystrokeInAVariable(benchmark::State &state)
{
    const PromptItem prompt = promptWithManyVariables(state.range(0));
    VariableValues values;
    VariableForm form({.title = QStringLiteral("Fill Variables"),
                       .cancel = QStringLiteral("Back"),
                       .confirm = QStringLiteral("Continue"),
                       .placeholder = VariableFields::Placeholder::valueForName});
    QObject::connect(&form, &VariableForm::valueEdited, &form,
                     [&](const QString &name, const QString &value) {
                         values.insert(name, value);
                         form.setValues(values);
                     });
    form.resize(Theme::panelWidth, Theme::panelHeight);
    form.show();
    if (!QTest::qWaitForWindowExposed(&form))
        return state.SkipWithError("no window");
    form.begin(prompt, values);
    QCoreApplication::sendPostedEvents();
    TextField &field = *form.fields().fields().first();
    int typed = 0;
    for (auto _ : state) {
        if (++typed % 40 == 0)
            field.clear();
        QTest::keyClick(&field, typed % 6 ? Qt::Key_A : Qt::Key_Space);
        QCoreApplication::sendPostedEvents();
        form.repaint();
    }
}
BENCHMARK(keystrokeInAVariable)->Arg(1 << 10)->Arg(100 << 10)->Unit(benchmark::kMillisecond);

/// Changes one variable's value: the one in every sentence (0), or one that stands in a few (1).
void previewOfALongPrompt(benchmark::State &state)
{
    const PromptItem prompt = promptWithManyVariables(100 << 10);
    const QString changed = state.range(0) == 0 ? QStringLiteral("name_0") : QStringLiteral("name_1");
    VariableValues values;
    for (const VariableToken &variable : PromptTemplateParser::variables(prompt.text))
        values.insert(variable.name, QStringLiteral("value"));
    PreviewText preview;
    preview.resize(Theme::panelWidth, 300);
    preview.show();
    if (!QTest::qWaitForWindowExposed(&preview))
        return state.SkipWithError("no window");
    preview.setPrompt(prompt, values);
    int round = 0;
    for (auto _ : state) {
        values.insert(changed, QString(++round % 40, u'x'));
        preview.setPrompt(prompt, values);
        preview.repaint();
    }
}
BENCHMARK(previewOfALongPrompt)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    return ScreenBenchmark::run(argc, argv);
}
