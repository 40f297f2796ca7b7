# SPDX-License-Identifier: GPL-3.0-or-later
# The screens: widgets, panels, theme and symbols.
add_library(BrevixMac STATIC
    # Look
    Theme.cpp Theme.h
    SystemAppearance.cpp SystemAppearance.h
    Symbols.cpp Symbols.h
    ThemePainting.cpp ThemePainting.h
    ScreenTexts.h
    # Controls
    ButtonBar.cpp ButtonBar.h
    BrandGlyph.cpp BrandGlyph.h
    ContentScrollArea.cpp ContentScrollArea.h
    HintBubble.cpp HintBubble.h
    PageFade.cpp PageFade.h
    PageHeader.cpp PageHeader.h
    SidebarList.cpp SidebarList.h
    SidebarModel.cpp SidebarModel.h
    InPanelMenu.cpp InPanelMenu.h
    StatusCard.cpp StatusCard.h
    TextField.cpp TextField.h
    TextLabel.cpp TextLabel.h
    ThemedButton.cpp ThemedButton.h
    ThinScrollBar.cpp ThinScrollBar.h
    # Windows
    AppWindows.cpp AppWindows.h
    RoundedPanel.cpp RoundedPanel.h
    # Palette
    FloatingPanelController.cpp FloatingPanelController.h
    PromptPalettePanel.cpp PromptPalettePanel.h
    PromptPaletteView.cpp PromptPaletteView.h
    PromptPreview.cpp PromptPreview.h
    PromptRowView.cpp PromptRowView.h
    # Picker
    MenuBarController.cpp MenuBarController.h
    MenuBarPickerPanel.cpp MenuBarPickerPanel.h
    MenuBarPickerView.cpp MenuBarPickerView.h
    PickerSearchPage.cpp PickerSearchPage.h
    PickerHeader.cpp PickerHeader.h
    PickerNotices.cpp PickerNotices.h
    PermissionList.cpp PermissionList.h
    SignInNotice.cpp SignInNotice.h
    PickerList.cpp PickerList.h
    PickerListModel.cpp PickerListModel.h
    PickerRowDelegate.cpp PickerRowDelegate.h
    PickerRowActions.cpp PickerRowActions.h
    EmptyState.cpp EmptyState.h
    ResultLine.cpp ResultLine.h
    PickerFooter.cpp PickerFooter.h
    SearchListKeys.cpp SearchListKeys.h
    ShareConfirmationBannerView.cpp ShareConfirmationBannerView.h
    ShareRequests.cpp ShareRequests.h
    LibraryPage.cpp LibraryPage.h
    # Variable forms
    CompactVariableForm.cpp CompactVariableForm.h
    PreviewBox.cpp PreviewBox.h
    PreviewText.cpp PreviewText.h
    VariableFields.cpp VariableFields.h
    VariableForm.cpp VariableForm.h
    VariableFillView.cpp VariableFillView.h
    # Resources
    Resources/Symbols.qrc
)
target_link_libraries(BrevixMac PUBLIC BrevixCore Qt6::Widgets PRIVATE Qt6::Svg Qt6::DBus)
