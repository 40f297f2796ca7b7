// SPDX-License-Identifier: GPL-3.0-or-later
#include "SharePage.h"

#include "Answers.h"
#include "Documents.h"
#include "Form.h"
#include "Page.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <utility>

namespace Cloud {

namespace {

struct SharedText
{
    QString title;
    QString text;
};

/// What a link leads to. A value.
struct Shared
{
    QString heading;
    QString kind;
    QList<SharedText> texts;
};

QString textAt(const QJsonObject &fields, QStringView name)
{
    return fields.value(name).toObject().value(u"stringValue").toString();
}

QString orUntitled(const QString &title, const QString &untitled)
{
    return title.trimmed().isEmpty() ? untitled : title;
}

Shared sharedPrompt(const QJsonObject &fields)
{
    const bool isSkill = textAt(fields, u"sourceType") == QLatin1String("skill");
    const QString title = orUntitled(textAt(fields, u"title"), isSkill ? QStringLiteral("Untitled Skill")
                                                                       : QStringLiteral("Untitled Prompt"));
    return {title,
            isSkill ? QStringLiteral("Shared skill") : QStringLiteral("Shared prompt"),
            {{isSkill ? QStringLiteral("Skill") : QStringLiteral("Prompt"), textAt(fields, u"text")}}};
}

Shared sharedCategory(const QJsonObject &fields)
{
    Shared shared{orUntitled(textAt(fields, u"name"), QStringLiteral("Untitled Category")), {}, {}};
    const QJsonArray prompts =
        fields.value(u"prompts").toObject().value(u"arrayValue").toObject().value(u"values").toArray();
    for (const QJsonValue prompt : prompts) {
        const QJsonObject content =
            prompt.toObject().value(u"mapValue").toObject().value(u"fields").toObject();
        shared.texts.append({orUntitled(textAt(content, u"title"), QStringLiteral("Untitled Prompt")),
                             textAt(content, u"text")});
    }
    const qsizetype count = shared.texts.size();
    shared.kind = QStringLiteral("Shared category, ") +
                  (count == 1 ? QStringLiteral("1 prompt") : QStringLiteral("%1 prompts").arg(count));
    return shared;
}

QString article(const SharedText &shared, int number)
{
    const QString id = QStringLiteral("text-%1").arg(number);
    // A line break that follows the tag directly is not shown, so one is put there.
    return QStringLiteral("<article>\n<header><h2>%1</h2><button type=\"button\" data-copies=\"%2\""
                          " aria-label=\"Copy %1\" hidden>Copy</button></header>\n"
                          "<pre id=\"%2\" tabindex=\"0\">\n%3</pre>\n</article>\n")
        .arg(shared.title.toHtmlEscaped(), id, shared.text.toHtmlEscaped());
}

Response answerPage(const Shared &shared)
{
    QString body = QStringLiteral("<main>\n<div class=\"top\">") + brandMark() + QStringLiteral("<div><h1>") +
                   shared.heading.toHtmlEscaped() + QStringLiteral("</h1>\n<p class=\"kind\">") +
                   shared.kind + QStringLiteral("</p></div></div>\n<div class=\"shared\">\n");
    int number = 0;
    for (const SharedText &text : shared.texts)
        body += article(text, ++number);
    if (shared.texts.isEmpty())
        body += QStringLiteral("<p class=\"lead\">There is no prompt in this category.</p>\n");
    body += QStringLiteral("</div>\n<p class=\"note\">Shared with Brevix.</p>\n"
                           "<p id=\"status\" class=\"quiet\" role=\"status\"></p>\n</main>");
    return pageAnswer({.status = 200,
                       .title = shared.heading + QStringLiteral(" - Brevix"),
                       .body = body,
                       .formTargets = {},
                       .script = pageResource(QStringLiteral("copy.js"))});
}

Response nothingShared()
{
    return problemPage(
        404, QStringLiteral("Nothing is shared here"),
        QStringLiteral("The link may be incomplete, or what it led to was taken back. Please ask "
                       "the person who sent it for a new one."));
}

} // namespace

SharePage::SharePage(const Documents &documents, QString libraryAppID)
    : m_documents(documents)
    , m_libraryAppID(std::move(libraryAppID))
{
}

Response SharePage::handle(const Request &request) const
{
    if (request.method != "GET" && request.method != "HEAD")
        return unimplemented();
    const QUrlQuery query = parseForm(request.query);
    const QString promptID = formValue(query, QStringLiteral("promptId"));
    const QString categoryID = formValue(query, QStringLiteral("categoryId"));
    if (promptID.isEmpty() == categoryID.isEmpty())
        return nothingShared();
    const QString folder = QStringLiteral("artifacts/%1/public/data/").arg(m_libraryAppID);
    const auto document = promptID.isEmpty()
                              ? m_documents.find(folder + QStringLiteral("sharedCategories"), categoryID)
                              : m_documents.find(folder + QStringLiteral("sharedPrompts"), promptID);
    if (!document)
        return nothingShared();
    const QJsonObject fields = QJsonDocument::fromJson(document->fields).object();
    return answerPage(promptID.isEmpty() ? sharedCategory(fields) : sharedPrompt(fields));
}

} // namespace Cloud
