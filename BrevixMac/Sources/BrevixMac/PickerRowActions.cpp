// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerRowActions.h"

#include "PickerRowDelegate.h"
#include "ScreenTexts.h"
#include "ThemedButton.h"

#include <QHBoxLayout>

#include <array>

namespace {

constexpr int leastTitleWidth = 150;
constexpr int rightPadding = 6;

} // namespace

PickerRowActions::PickerRowActions(QWidget *parent)
    : QWidget(parent)
    , m_insert(new ThemedButton(ThemedButton::Kind::primary, QStringLiteral("Insert Prompt"), this))
    , m_copy(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Copy"), this))
    , m_share(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Share"), this))
{
    m_insert->setTrailingSymbol(QStringLiteral("return"));
    m_copy->setFaceSymbol(QStringLiteral("doc.on.doc"));
    m_share->setFaceSymbol(QStringLiteral("square.and.arrow.up"));
    m_share->setFace(ThemedButton::Face::symbolOnly);
    m_share->setEnabled(false);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(m_insert);
    row->addWidget(m_copy);
    row->addWidget(m_share);
    connect(m_insert, &QPushButton::clicked, this, &PickerRowActions::insertRequested);
    connect(m_copy, &QPushButton::clicked, this, &PickerRowActions::copyRequested);
}

void PickerRowActions::describe(const PickerResult &result, const PickerTargetStatus &status,
                                bool isInserting)
{
    const bool isSkill = result.skill() != nullptr;
    m_insert->setLabel(isSkill ? QStringLiteral("Insert Skill") : QStringLiteral("Insert Prompt"));
    m_insert->setEnabled(status.ready && !isInserting);
    m_insert->setBusy(isInserting);
    m_insert->setToolTip(status.ready ? QString(u"Insert into " + status.appName) : status.title);
    m_insert->setAccessibleDescription(m_insert->toolTip());
    m_copy->setLabel(isSkill        ? QStringLiteral("Copy Skill")
                     : status.ready ? QStringLiteral("Copy")
                                    : QStringLiteral("Copy Instead"));
    m_copy->setToolTip(m_copy->text());
    m_share->setToolTip((isSkill ? QStringLiteral("Share Skill") : QStringLiteral("Share Prompt")) + u". " +
                        ScreenTexts::notAvailableYet());
    m_share->setAccessibleDescription(m_share->toolTip());
}

int PickerRowActions::fit(int rowWidth)
{
    using Face = ThemedButton::Face;
    constexpr std::array<std::pair<Face, Face>, 3> choices{
        {{Face::full, Face::full}, {Face::full, Face::symbolOnly}, {Face::symbolOnly, Face::symbolOnly}}};
    const Theme &theme = Theme::shared();
    const int room = rowWidth - PickerRowDelegate::textLeft() - theme.scaled(leastTitleWidth);
    int width = 0;
    for (const auto &[insertFace, copyFace] : choices) {
        m_insert->setFace(insertFace);
        m_copy->setFace(copyFace);
        width = m_insert->sizeFor(insertFace).width() + m_copy->sizeFor(copyFace).width() +
                m_share->sizeFor(Face::symbolOnly).width() + theme.scaled(rightPadding);
        if (width <= room)
            break;
    }
    layout()->setContentsMargins(0, 0, theme.scaled(rightPadding), 0);
    return width;
}
