// SPDX-License-Identifier: GPL-3.0-or-later
#include "AtSpiTextField.h"

#include "AtSpiRoles.h"
#include "AtSpiTextEdit.h"

#include <QCoroDBus>

namespace AtSpiTextField {

namespace {

// An edit that was sent cannot be called back, so its outcome is worth waiting for: as long as it is not
// known, no other way of inserting may be tried, or the text could be there twice.
constexpr std::chrono::milliseconds editDeadline{4000};

/// One text object and how to ask it.
struct Field
{
    std::shared_ptr<AtSpiBus> bus;
    AtSpiObject object;
    AtSpiToolkit toolkit;

    AtSpiCall call(const QString &interface, const QString &member, const QVariantList &arguments = {}) const
    {
        return {.object = object, .interface = interface, .member = member, .arguments = arguments};
    }

    AtSpiCall getText(int count) const { return call(AtSpi::text, QStringLiteral("GetText"), {0, count}); }

    AtSpiCall property(const QString &name) const { return propertyCall(object, AtSpi::text, name); }

    qsizetype offset(QStringView text, qsizetype utf16) const
    {
        return AtSpiTextEdit::toToolkitOffset(text, utf16, AtSpiTextEdit::offsetUnit(toolkit));
    }

    qsizetype utf16(QStringView text, qsizetype offset) const
    {
        return AtSpiTextEdit::fromToolkitOffset(text, offset, AtSpiTextEdit::offsetUnit(toolkit));
    }
};

int countIn(const QDBusMessage &reply)
{
    return replyValue<int>(reply).value_or(-1);
}

std::optional<AtSpiText::Selection> selectionOf(const Field &field, const QString &text,
                                                const QDBusMessage &caret, const QDBusMessage &selections,
                                                const QDBusMessage &first)
{
    const auto caretOffset = replyValue<int>(caret);
    const bool isSelected = replyValue<int>(selections).value_or(0) > 0 && first.arguments().size() == 2 &&
                            first.type() == QDBusMessage::ReplyMessage;
    if (isSelected) {
        const auto one = field.utf16(text, first.arguments().at(0).toInt());
        const auto other = field.utf16(text, first.arguments().at(1).toInt());
        return AtSpiText::Selection{std::min(one, other), std::max(one, other)};
    }
    if (!caretOffset || *caretOffset < 0)
        return std::nullopt;
    const qsizetype position = field.utf16(text, *caretOffset);
    return AtSpiText::Selection{position, position};
}

bool canCrossTheBus(const QString &text)
{
    return text.size() <= longestText && text.isValidUtf16() && !text.contains(QChar(u'\0'));
}

/// One paragraph of an office document is one object: a line end in it would become a manual break, where a
/// paste makes paragraphs.
bool wouldBreakParagraph(const Field &field, const QString &before, const QString &after, qsizetype caret)
{
    return field.toolkit == AtSpiToolkit::libreOffice &&
           AtSpiTextEdit::smallestEdit(before, after, caret).inserted.contains(u'\n');
}

struct EditCalls
{
    std::optional<AtSpiCall> removal;
    std::optional<AtSpiCall> insertion;
};

EditCalls callsFor(const Field &field, const QString &before, const AtSpiTextEdit::Edit &edit)
{
    const int start = static_cast<int>(field.offset(before, edit.start));
    const int end = static_cast<int>(field.offset(before, edit.start + edit.removed));
    EditCalls calls;
    if (edit.removed > 0) {
        calls.removal = field.call(AtSpi::editableText, QStringLiteral("DeleteText"), {start, end});
        calls.removal->deadline = editDeadline;
    }
    if (!edit.inserted.isEmpty()) {
        const int length = static_cast<int>(AtSpiTextEdit::insertionLength(edit.inserted, field.toolkit));
        calls.insertion =
            field.call(AtSpi::editableText, QStringLiteral("InsertText"), {start, edit.inserted, length});
        calls.insertion->deadline = editDeadline;
    }
    return calls;
}

/// Sends the edit and the question for its outcome in one go; a program handles what one sender sends in
/// order. Gives what the field holds afterwards.
QCoro::Task<std::optional<QString>> carryOut(Field field, QString before, QString after, qsizetype caret)
{
    const auto edit = AtSpiTextEdit::smallestEdit(before, after, caret);
    const EditCalls calls = callsFor(field, before, edit);
    const int expectedCount = countOf(after, field.toolkit);
    AtSpiCall getText = field.getText(expectedCount);
    AtSpiCall getCount = field.property(QStringLiteral("CharacterCount"));
    getText.deadline = editDeadline;
    getCount.deadline = editDeadline;

    std::vector<QCoro::Task<QDBusMessage>> edits;
    if (calls.removal)
        edits.push_back(AtSpiBus::ask(field.bus, *calls.removal));
    if (calls.insertion)
        edits.push_back(AtSpiBus::ask(field.bus, *calls.insertion));
    auto countQuestion = AtSpiBus::ask(field.bus, getCount);
    auto textQuestion = AtSpiBus::ask(field.bus, getText);
    for (auto &question : edits)
        co_await question; // what it answers means nothing: some answer true and do nothing
    const QDBusMessage countReply = co_await countQuestion;
    const QDBusMessage textReply = co_await textQuestion;
    if (countIn(countReply) == expectedCount)
        co_return replyValue<QString>(textReply);
    const auto other = co_await read(field.bus, field.object, field.toolkit, -1);
    co_return other ? std::optional(other->value) : std::nullopt;
}

} // namespace

bool isReadable(const AtSpiDescription &description)
{
    return description.lists(AtSpi::text) && description.role != static_cast<uint>(AtSpiRole::passwordText);
}

bool isWritable(const AtSpiDescription &description)
{
    if (!isReadable(description) || !description.lists(AtSpi::editableText) ||
        !description.is(AtSpiState::editable) || description.is(AtSpiState::readOnly) ||
        !isOnScreen(description))
        return false;
    switch (description.toolkit) {
    case AtSpiToolkit::gtk3:
    case AtSpiToolkit::gtk4:
    case AtSpiToolkit::libreOffice:
        return true;
    case AtSpiToolkit::qt:
        // A one-line field of Qt loses its undo history and its caret.
        return description.is(AtSpiState::multiLine);
    case AtSpiToolkit::gecko:    // answers true and does nothing
    case AtSpiToolkit::chromium: // does not take it
    case AtSpiToolkit::unknown:  // nothing is known of its units
        return false;
    }
    return false;
}

int countOf(const QString &text, AtSpiToolkit toolkit)
{
    return static_cast<int>(
        AtSpiTextEdit::toToolkitOffset(text, text.size(), AtSpiTextEdit::offsetUnit(toolkit)));
}

QCoro::Task<std::optional<AtSpiText>> read(std::shared_ptr<AtSpiBus> bus, AtSpiObject object,
                                           AtSpiToolkit toolkit, int likelyCount)
{
    const Field field{bus, object, toolkit};
    const AtSpiCall getSelection = field.call(AtSpi::text, QStringLiteral("GetSelection"), {0});
    const AtSpiCall countSelections = field.call(AtSpi::text, QStringLiteral("GetNSelections"));
    auto countQuestion = AtSpiBus::ask(bus, field.property(QStringLiteral("CharacterCount")));
    auto caretQuestion = AtSpiBus::ask(bus, field.property(QStringLiteral("CaretOffset")));
    auto selectionsQuestion = AtSpiBus::ask(bus, countSelections);
    auto selectionQuestion = AtSpiBus::ask(bus, getSelection);
    std::optional<QCoro::Task<QDBusMessage>> guess;
    if (likelyCount > 0)
        guess.emplace(AtSpiBus::ask(bus, field.getText(likelyCount)));
    const QDBusMessage countReply = co_await countQuestion;
    const QDBusMessage caret = co_await caretQuestion;
    const QDBusMessage selections = co_await selectionsQuestion;
    const QDBusMessage selection = co_await selectionQuestion;
    QDBusMessage textReply;
    if (guess)
        textReply = co_await *guess;

    const int count = countIn(countReply);
    if (count < 0 || count > longestText)
        co_return std::nullopt;
    // Never "to the end": some give nothing for that.
    if (count != likelyCount || !guess)
        textReply = co_await AtSpiBus::ask(bus, field.getText(count));
    const auto text = replyValue<QString>(textReply);
    if (!text || text->size() > longestText)
        co_return std::nullopt;
    AtSpiText result{.value = *text, .characterCount = count, .selection = std::nullopt};
    result.selection = selectionOf(field, *text, caret, selections, selection);
    co_return result;
}

QCoro::Task<WriteOutcome> replace(std::shared_ptr<AtSpiBus> bus, AtSpiObject object, AtSpiToolkit toolkit,
                                  AtSpiText present, QString value)
{
    const Field field{bus, object, toolkit};
    const qsizetype caret = present.selection ? present.selection->start : present.value.size();
    if (!canCrossTheBus(value) || wouldBreakParagraph(field, present.value, value, caret))
        co_return WriteOutcome::refused;
    const auto outcome = co_await carryOut(field, present.value, value, caret);
    if (outcome == value)
        co_return WriteOutcome::done;
    // A field that filters or reshapes what it is given keeps its old text instead of half of the new.
    if (outcome && *outcome != present.value)
        co_await carryOut(field, *outcome, present.value, caret);
    if (outcome)
        co_return WriteOutcome::refused;
    if (!bus->isOpen()) // the bus died with the answer
        co_return WriteOutcome::unknown;
    const bool isThere = co_await AtSpiBus::isOnBus(bus, object.owner);
    co_return isThere ? WriteOutcome::unknown : WriteOutcome::refused;
}

QCoro::Task<bool> select(std::shared_ptr<AtSpiBus> bus, AtSpiObject object, AtSpiToolkit toolkit,
                         AtSpiText present, AtSpiText::Selection selection)
{
    const Field field{bus, object, toolkit};
    const int start = static_cast<int>(field.offset(present.value, selection.start));
    const int end = static_cast<int>(field.offset(present.value, selection.end));
    if (start == end) {
        const AtSpiCall setCaret = field.call(AtSpi::text, QStringLiteral("SetCaretOffset"), {start});
        const QDBusMessage reply = co_await AtSpiBus::ask(bus, setCaret);
        co_return replyValue<bool>(reply).value_or(false);
    }
    const bool hasSelection = present.selection && present.selection->start != present.selection->end;
    AtSpiCall call = hasSelection ? field.call(AtSpi::text, QStringLiteral("SetSelection"), {0, start, end})
                                  : field.call(AtSpi::text, QStringLiteral("AddSelection"), {start, end});
    call.silenceIsHarmless = true; // GTK 4 selects and never replies
    co_await AtSpiBus::ask(bus, call);
    const auto after = co_await read(bus, object, toolkit, present.characterCount);
    co_return after && after->selection == selection;
}

} // namespace AtSpiTextField
