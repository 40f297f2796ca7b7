// SPDX-License-Identifier: GPL-3.0-or-later
#include "PickerRowActions.h"

#include "OneLine.h"
#include "PickerRowDelegate.h"
#include "ThemedButton.h"

#include <QHBoxLayout>

#include <array>

namespace {

constexpr int leastTitleWidth = 150;
constexpr int leastPlainTitleWidth = 130; // its lists are narrower
constexpr int rightPadding = 6;

} // namespace

PickerRowActions::PickerRowActions(Wording wording, QWidget *parent)
    : QWidget(parent)
    , m_wording(wording)
    , m_insert(new ThemedButton(wording == Wording::quiet ? ThemedButton::Kind::plain
                                                          : ThemedButton::Kind::primary,
                                QStringLiteral("Insert"), this))
    , m_copy(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Copy"), this))
    , m_share(new ThemedButton(ThemedButton::Kind::plain, QStringLiteral("Share"), this))
{
    m_insert->setTrailingSymbol(QStringLiteral("return"));
    m_copy->setFaceSymbol(QStringLiteral("doc.on.doc"));
    m_share->setFaceSymbol(QStringLiteral("square.and.arrow.up"));
    m_share->setFace(ThemedButton::Face::symbolOnly);
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addWidget(m_insert);
    row->addWidget(m_copy);
    row->addWidget(m_share);
    connect(m_insert, &QPushButton::clicked, this, &PickerRowActions::insertRequested);
    connect(m_copy, &QPushButton::clicked, this, &PickerRowActions::copyRequested);
    connect(m_share, &QPushButton::clicked, this, &PickerRowActions::shareRequested);
}

void PickerRowActions::describe(const PickerResult &result, const Circumstances &circumstances)
{
    const bool isSkill = result.skill() != nullptr;
    describeInsert(isSkill, circumstances);
    describeCopy(isSkill, circumstances.target.ready);
    describeShare(isSkill, circumstances.isSharing);
}

void PickerRowActions::describeInsert(bool isSkill, const Circumstances &circumstances)
{
    const PickerTargetStatus &target = circumstances.target;
    m_insert->setLabel(m_wording != Wording::namesTheKind ? QStringLiteral("Insert")
                       : isSkill                          ? QStringLiteral("Insert Skill")
                                                          : QStringLiteral("Insert Prompt"));
    m_insert->setBusy(circumstances.isInserting);
    m_insert->setEnabled(target.ready && !circumstances.isInserting);
    m_insert->setToolTip(target.ready ? QString(u"Insert into " + OneLine::of(target.appName))
                                      : target.title);
    m_insert->setAccessibleDescription(m_insert->toolTip());
}

void PickerRowActions::describeCopy(bool isSkill, bool isReady)
{
    m_copy->setLabel(isSkill && m_wording == Wording::namesTheKind ? QStringLiteral("Copy Skill")
                     : isReady || m_wording == Wording::quiet      ? QStringLiteral("Copy")
                                                                   : QStringLiteral("Copy Instead"));
    m_copy->setToolTip(m_copy->text());
}

void PickerRowActions::describeShare(bool isSkill, bool isSharing)
{
    m_share->setLabel(isSharing ? QStringLiteral("Sharing") : QStringLiteral("Share"));
    m_share->setBusy(isSharing);
    m_share->setEnabled(!isSharing);
    m_share->setToolTip(isSkill ? QStringLiteral("Share Skill") : QStringLiteral("Share Prompt"));
    m_share->setAccessibleDescription(m_share->toolTip());
}

int PickerRowActions::fit(int rowWidth)
{
    using Face = ThemedButton::Face;
    constexpr std::array<std::pair<Face, Face>, 3> choices{
        {{Face::full, Face::full}, {Face::full, Face::symbolOnly}, {Face::symbolOnly, Face::symbolOnly}}};
    const Theme &theme = Theme::shared();
    const int titleWidth = m_wording != Wording::namesTheKind ? leastPlainTitleWidth : leastTitleWidth;
    const int room = rowWidth - PickerRowDelegate::textLeft() - theme.scaled(titleWidth);
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
