// SPDX-License-Identifier: GPL-3.0-or-later
#include "SkillEditorView.h"

#include "AppState.h"
#include "ContentScrollArea.h"
#include "EditorFrame.h"
#include "EditorTextView.h"
#include "FormParts.h"
#include "HeadingRow.h"
#include "OneLine.h"
#include "SkillEditorModel.h"
#include "SkillImport.h"
#include "StatusCard.h"
#include "TextField.h"
#include "TextLabel.h"
#include "ThemedButton.h"

#include "Foundation/Text.h"

#include <QDragEnterEvent>
#include <QFileDialog>
#include <QHBoxLayout>

#include <chrono>

namespace {

constexpr int halo = Theme::haloWidth;
constexpr QSize designSize(900, 640);
constexpr int headingGap = 2;
constexpr int fieldGap = 7;
constexpr int columnGap = 22;
constexpr int leastFormHeight = 70;
constexpr int narrowestColumns = 600; // below it the columns stand one over the other
// Counting the words of a long text takes a while; it waits until the typing rests.
constexpr int longText = 32 * 1024;
constexpr std::chrono::milliseconds restOfTyping{250};
// What is shown of a text that cannot be edited.
constexpr qsizetype excerptLength = 32LL * 1024;
constexpr qsizetype excerptLine = 2LL * 1024;

/// The beginning of @p text, with its long lines cut off.
QString excerpt(const QString &text)
{
    QString shown;
    const QStringList lines = text.first(std::min(text.size(), excerptLength)).split(u'\n');
    for (const QString &line : lines) {
        shown += line.size() > excerptLine ? QString(line.first(excerptLine) + u'\u2026') : line;
        shown += u'\n';
    }
    return shown + u'\u2026';
}

} // namespace

SkillEditorView::SkillEditorView(AppState &appState)
    : EditorWindow(QStringLiteral("New Skill"), designSize)
    , m_appState(appState)
    , m_model(new SkillEditorModel(appState, this))
    , m_title(new TextField(this))
    , m_body(new EditorTextView(this))
    , m_import(new ThemedButton(ThemedButton::Kind::quiet, QStringLiteral("Import .txt/.md"), this))
    , m_remove(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Remove"), this))
    , m_source(new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::elide, this))
    , m_statistics(
          new TextLabel(Theme::Type::count, Theme::Color::tertiary, TextLabel::Overflow::elide, this))
    , m_previewTitle(
          new TextLabel(Theme::Type::rowTitle, Theme::Color::text, TextLabel::Overflow::elide, this))
    , m_preview(new EditorTextView(this))
    , m_frame(nullptr)
    , m_counting(this)
{
    setAcceptDrops(true);
    m_title->setPlaceholderText(QStringLiteral("Example: Senior Swift Code Reviewer"));
    m_title->setAccessibleName(QStringLiteral("Skill Name"));
    m_body->setAccessibleName(QStringLiteral("Skill Instructions"));
    m_body->setAcceptsFiles(true);
    m_body->setDesignHeights(170, 110);
    m_import->setSymbol(QStringLiteral("square.and.arrow.down"));
    m_remove->setInk(Theme::Color::accent);
    m_preview->setPreview(true);
    m_preview->setDesignHeights(110, 80);
    m_preview->setAccessibleName(QStringLiteral("Preview"));
    m_preview->setPlaceholderText(QStringLiteral("Skill instructions will appear here."));
    m_counting.setSingleShot(true);
    m_counting.setInterval(restOfTyping);

    QWidget *header = makeHeader(QStringLiteral("wand.and.stars.inverse"),
                                 QStringLiteral("Save reusable instructions for Claude, ChatGPT, Codex, "
                                                "Antigravity, or any focused text field."));
    m_frame =
        new EditorFrame(*m_model, header, makeForm(), QStringLiteral("Create Skill"), Theme::margin, this);
    setFrame(*m_model, *m_frame);
    m_frame->setTabOrders({}, {m_title, m_import, m_body, m_remove, m_preview});
    observeModel();
    showContent();
}

QWidget *SkillEditorView::makeForm()
{
    auto *form = new QWidget(this);
    auto *content = new QWidget(form);
    auto *fields = new QVBoxLayout;
    fields->setSpacing(0);
    addFields(*fields);
    auto *inspector = new QVBoxLayout;
    inspector->setSpacing(0);
    addInspector(*inspector);
    m_columns = new QBoxLayout(QBoxLayout::LeftToRight, content);
    m_columns->setContentsMargins(0, 0, 0, 6);
    m_columns->setSpacing(columnGap - 2 * halo);
    m_columns->addLayout(fields, 3);
    m_columns->addLayout(inspector, 2);
    auto *scroll = new ContentScrollArea(content, leastFormHeight, Theme::margin - halo, form);
    scroll->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
    auto *layout = new QVBoxLayout(form);
    layout->setContentsMargins(Theme::margin - halo, 14, 0, 0);
    layout->addWidget(scroll);
    return form;
}

void SkillEditorView::addFields(QVBoxLayout &column)
{
    column.addWidget(FormParts::heading(QStringLiteral("Skill Name"), this));
    column.addSpacing(headingGap);
    column.addWidget(m_title);
    column.addSpacing(fieldGap);
    column.addWidget(new HeadingRow(QStringLiteral("Skill Instructions"), {m_import}, this));
    auto *hint =
        new TextLabel(Theme::Type::caption, Theme::Color::secondary, TextLabel::Overflow::wrap, this);
    hint->setText(QStringLiteral("Paste a skill, or import a plain text / Markdown file."));
    hint->setContentsMargins(halo, 0, halo, 0);
    column.addWidget(hint);
    column.addSpacing(headingGap);
    column.addWidget(FormParts::growingBox(m_body, this), 1);
    auto *below = new QHBoxLayout;
    below->setContentsMargins(halo, 1, halo, 0);
    below->setSpacing(8);
    m_statistics->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_remove->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    below->addWidget(m_statistics);
    below->addStretch(1);
    m_source->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    below->addWidget(m_source);
    below->addWidget(m_remove);
    below->addStrut(Theme::shared().scaled(36));
    column.addLayout(below);
}

void SkillEditorView::addInspector(QVBoxLayout &column)
{
    column.addWidget(FormParts::heading(QStringLiteral("Preview"), this));
    column.addSpacing(headingGap + halo);
    auto *titleRow = new QHBoxLayout;
    titleRow->setContentsMargins(halo, 0, halo, 0);
    titleRow->setSpacing(8);
    titleRow->addWidget(m_previewTitle);
    titleRow->addWidget(FormParts::tag(QStringLiteral("Skill"), this));
    titleRow->addStretch(1);
    column.addLayout(titleRow);
    column.addSpacing(fieldGap - halo);
    column.addWidget(FormParts::growingBox(m_preview, this), 1);
    column.addSpacing(fieldGap);
    auto *scope = new StatusCard(this);
    scope->describe(StatusCard::Tint::neutral, QStringLiteral("checkmark.seal"), QStringLiteral("V3 Scope"),
                    QStringLiteral("Skills are create-only in this native Mac build. They sync to your user "
                                   "library and can be copied or inserted from the menu bar picker."));
    auto *scopeRow = new QHBoxLayout;
    scopeRow->setContentsMargins(halo, 0, halo, halo);
    scopeRow->addWidget(scope);
    column.addLayout(scopeRow);
}

void SkillEditorView::observeModel()
{
    m_model->pullText = [this] { m_body->report(); };
    connect(m_title, &QLineEdit::textEdited, m_model, &SkillEditorModel::setTitle);
    connect(m_title, &QLineEdit::textChanged, this, [this] { showTitle(); });
    connect(m_title, &QLineEdit::returnPressed, m_body, [this] { m_body->setFocus(); });
    connect(m_body, &EditorTextView::contentEdited, this, &SkillEditorView::onTextEdited);
    connect(m_body, &EditorTextView::fileOffered, m_model, &SkillEditorModel::importFile);
    connect(m_body, &EditorTextView::insertionRefused, m_model, &EditorModel::refuseInsertion);
    connect(m_import, &QPushButton::clicked, this, &SkillEditorView::chooseFile);
    connect(m_remove, &QPushButton::clicked, m_model, &SkillEditorModel::removeImportedText);
    connect(&m_counting, &QTimer::timeout, this, &SkillEditorView::refreshStatistics);

    connect(m_model, &EditorModel::contentReplaced, this, &SkillEditorView::showContent);
    connect(m_model, &EditorModel::isSavingChanged, this, &SkillEditorView::refreshImport);
    connect(m_model, &SkillEditorModel::titleReplaced, this, [this] { m_title->setText(m_model->title()); });
    connect(m_model, &SkillEditorModel::textReplaced, this, &SkillEditorView::showText);
    connect(m_model, &SkillEditorModel::sourceFilenameChanged, this, &SkillEditorView::refreshImport);
    connect(m_model, &SkillEditorModel::isImportingChanged, this, &SkillEditorView::refreshImport);
    connect(m_model, &SkillEditorModel::skillSaved, this, &SkillEditorView::showInList);
}

// Content

void SkillEditorView::showContent()
{
    m_title->setText(m_model->title());
    showTitle();
    if (m_model->isTextEditable())
        m_body->resetContent(m_model->text());
    showText();
}

void SkillEditorView::showTitle()
{
    m_previewTitle->setText(Text::isBlank(m_model->title()) ? QStringLiteral("Untitled")
                                                            : OneLine::of(m_model->title()));
}

void SkillEditorView::showText()
{
    const bool isEditable = m_model->isTextEditable();
    if (!isEditable)
        m_body->resetContent(excerpt(m_model->text()));
    else if (m_body->isReadOnly()) // it shows an excerpt, to which nothing must lead back
        m_body->resetContent(m_model->text());
    else if (m_body->content() != m_model->text()) {
        m_body->replaceContent(m_model->text());
        m_body->moveCursor(QTextCursor::Start); // a file is read from its beginning
    }
    refreshImport();
    m_preview->followContent(isEditable ? m_model->text() : m_body->content());
    refreshStatistics();
}

void SkillEditorView::onTextEdited()
{
    if (!m_model->isTextEditable())
        return;
    m_model->setText(m_body->content());
    m_preview->followContent(m_model->text());
    if (m_model->text().size() > longText)
        m_counting.start();
    else
        refreshStatistics();
}

void SkillEditorView::refreshStatistics()
{
    m_counting.stop();
    m_statistics->setText(m_model->statistics());
}

void SkillEditorView::refreshImport()
{
    const auto &source = m_model->sourceFilename();
    m_source->setText(source ? OneLine::of(u"Imported from " + *source) : QString());
    m_source->setVisible(source.has_value());
    m_remove->setVisible(!m_model->isTextEditable());
    m_remove->setEnabled(!m_model->isSaving());
    m_import->setBusy(m_model->isImporting());
    m_import->setEnabled(!m_model->isSaving() && !m_model->isImporting());
    m_title->setReadOnly(m_model->isSaving());
    m_body->setReadOnly(m_model->isSaving() || !m_model->isTextEditable());
}

void SkillEditorView::focusFirst()
{
    m_title->setFocus();
}

void SkillEditorView::report()
{
    m_body->report();
}

void SkillEditorView::showInList(const SkillItem &skill)
{
    m_appState.setQuery(skill.title); // a visible list selects nothing for a new query
    m_appState.setSelectedSkillID(skill.id);
}

// Import

QFileDialog *SkillEditorView::fileChooser() const
{
    return findChild<QFileDialog *>();
}

void SkillEditorView::chooseFile()
{
    if (fileChooser())
        return;
    auto *chooser = new QFileDialog(this, QStringLiteral("Import Skill"));
    chooser->setAttribute(Qt::WA_DeleteOnClose);
    chooser->setAcceptMode(QFileDialog::AcceptOpen);
    chooser->setFileMode(QFileDialog::ExistingFile);
    chooser->setOption(QFileDialog::HideNameFilterDetails);
    chooser->setNameFilters(SkillImport::nameFilters());
    connect(chooser, &QFileDialog::fileSelected, m_model, &SkillEditorModel::importFile);
    chooser->open();
}

void SkillEditorView::resizeEvent(QResizeEvent *event)
{
    EditorWindow::resizeEvent(event);
    if (m_columns)
        FormParts::turnColumns(*m_columns, width() >= Theme::shared().scaled(narrowestColumns));
}

void SkillEditorView::dragEnterEvent(QDragEnterEvent *event)
{
    if (SkillImport::localFile(*event->mimeData()))
        event->acceptProposedAction();
}

void SkillEditorView::dropEvent(QDropEvent *event)
{
    if (const auto path = SkillImport::localFile(*event->mimeData())) {
        event->acceptProposedAction();
        m_model->importFile(*path);
    }
}
