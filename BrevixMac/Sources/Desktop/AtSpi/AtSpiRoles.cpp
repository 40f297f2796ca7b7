// SPDX-License-Identifier: GPL-3.0-or-later
#include "AtSpiRoles.h"

#include <array>

namespace {

// The role numbers of AT-SPI in their order, in the spelling of the seam.
constexpr std::array roleNames{"AXInvalid",
                               "AXAcceleratorLabel",
                               "AXAlert",
                               "AXAnimation",
                               "AXArrow",
                               "AXCalendar",
                               "AXCanvas",
                               "AXCheckBox",
                               "AXCheckMenuItem",
                               "AXColorChooser",
                               "AXColumnHeader",
                               "AXComboBox",
                               "AXDateEditor",
                               "AXDesktopIcon",
                               "AXDesktopFrame",
                               "AXDial",
                               "AXDialog",
                               "AXDirectoryPane",
                               "AXDrawingArea",
                               "AXFileChooser",
                               "AXFiller",
                               "AXFocusTraversable",
                               "AXFontChooser",
                               "AXFrame",
                               "AXGlassPane",
                               "AXHtmlContainer",
                               "AXIcon",
                               "AXImage",
                               "AXInternalFrame",
                               "AXLabel",
                               "AXLayeredPane",
                               "AXList",
                               "AXListItem",
                               "AXMenu",
                               "AXMenuBar",
                               "AXMenuItem",
                               "AXOptionPane",
                               "AXPageTab",
                               "AXPageTabList",
                               "AXPanel",
                               "AXPasswordText",
                               "AXPopupMenu",
                               "AXProgressBar",
                               "AXPushButton",
                               "AXRadioButton",
                               "AXRadioMenuItem",
                               "AXRootPane",
                               "AXRowHeader",
                               "AXScrollBar",
                               "AXScrollPane",
                               "AXSeparator",
                               "AXSlider",
                               "AXSpinButton",
                               "AXSplitPane",
                               "AXStatusBar",
                               "AXTable",
                               "AXTableCell",
                               "AXTableColumnHeader",
                               "AXTableRowHeader",
                               "AXTearoffMenuItem",
                               "AXTerminal",
                               "AXText",
                               "AXToggleButton",
                               "AXToolBar",
                               "AXToolTip",
                               "AXTree",
                               "AXTreeTable",
                               "AXUnknown",
                               "AXViewport",
                               "AXWindow",
                               "AXExtended",
                               "AXHeader",
                               "AXFooter",
                               "AXParagraph",
                               "AXRuler",
                               "AXApplication",
                               "AXAutocomplete",
                               "AXEditbar",
                               "AXEmbedded",
                               "AXEntry",
                               "AXChart",
                               "AXCaption",
                               "AXDocumentFrame",
                               "AXHeading",
                               "AXPage",
                               "AXSection",
                               "AXRedundantObject",
                               "AXForm",
                               "AXLink",
                               "AXInputMethodWindow",
                               "AXTableRow",
                               "AXTreeItem",
                               "AXDocumentSpreadsheet",
                               "AXDocumentPresentation",
                               "AXDocumentText",
                               "AXDocumentWeb",
                               "AXDocumentEmail",
                               "AXComment",
                               "AXListBox",
                               "AXGrouping",
                               "AXImageMap",
                               "AXNotification",
                               "AXInfoBar",
                               "AXLevelBar",
                               "AXTitleBar",
                               "AXBlockQuote",
                               "AXAudio",
                               "AXVideo",
                               "AXDefinition",
                               "AXArticle",
                               "AXLandmark",
                               "AXLog",
                               "AXMarquee",
                               "AXMath",
                               "AXRating",
                               "AXTimer",
                               "AXStatic",
                               "AXMathFraction",
                               "AXMathRoot",
                               "AXSubscript",
                               "AXSuperscript",
                               "AXDescriptionList",
                               "AXDescriptionTerm",
                               "AXDescriptionValue",
                               "AXFootnote",
                               "AXContentDeletion",
                               "AXContentInsertion",
                               "AXMark",
                               "AXSuggestion",
                               "AXPushButtonMenu"};

bool isTextRole(AtSpiRole role)
{
    switch (role) {
    case AtSpiRole::text:
    case AtSpiRole::entry:
    case AtSpiRole::editBar:
    case AtSpiRole::autocomplete:
        return true;
    default:
        return false;
    }
}

// Pieces of a document that take text when they are editable.
bool isDocumentRole(AtSpiRole role)
{
    switch (role) {
    case AtSpiRole::paragraph:
    case AtSpiRole::section:
    case AtSpiRole::documentFrame:
    case AtSpiRole::documentText:
    case AtSpiRole::documentWeb:
        return true;
    default:
        return false;
    }
}

} // namespace

QString axRole(const AtSpiDescription &description)
{
    const auto role = static_cast<AtSpiRole>(description.role);
    if (role == AtSpiRole::passwordText)
        return AX::textField;
    if (role == AtSpiRole::terminal || (isDocumentRole(role) && description.is(AtSpiState::editable)))
        return AX::textArea;
    if (isTextRole(role))
        return description.is(AtSpiState::multiLine) ? AX::textArea : AX::textField;
    if (role == AtSpiRole::comboBox)
        return AX::comboBox;
    if (role == AtSpiRole::application)
        return AX::application;
    return QLatin1String(description.role < roleNames.size() ? roleNames[description.role] : "AXUnknown");
}

QString axSubrole(const AtSpiDescription &description)
{
    switch (static_cast<AtSpiRole>(description.role)) {
    case AtSpiRole::passwordText:
        return AX::secureTextField;
    case AtSpiRole::terminal:
        return AX::terminal;
    default:
        return {};
    }
}

bool takesText(const AtSpiDescription &description)
{
    const auto role = static_cast<AtSpiRole>(description.role);
    return role == AtSpiRole::passwordText || role == AtSpiRole::terminal ||
           description.is(AtSpiState::editable);
}

bool isOnScreen(const AtSpiDescription &description)
{
    // GTK 4 never says SHOWING.
    return description.toolkit == AtSpiToolkit::gtk4 || description.is(AtSpiState::showing) ||
           description.is(AtSpiState::focused);
}

bool isFocusNoise(const AtSpiDescription &description)
{
    switch (static_cast<AtSpiRole>(description.role)) {
    case AtSpiRole::desktopFrame:
    case AtSpiRole::filler:
    case AtSpiRole::frame:
    case AtSpiRole::glassPane:
    case AtSpiRole::internalFrame:
    case AtSpiRole::layeredPane:
    case AtSpiRole::optionPane:
    case AtSpiRole::pageTab:
    case AtSpiRole::panel:
    case AtSpiRole::redundantObject:
    case AtSpiRole::rootPane:
    case AtSpiRole::scrollPane:
    case AtSpiRole::unknown:
    case AtSpiRole::viewport:
    case AtSpiRole::window:
    case AtSpiRole::application:
        return !description.is(AtSpiState::editable);
    default:
        return false;
    }
}
