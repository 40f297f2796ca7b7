# SPDX-License-Identifier: GPL-3.0-or-later
# The screens: widgets, panels, theme and symbols.
add_library(BrevixMac STATIC
    MenuBarController.cpp MenuBarController.h
    MenuBarPickerView.cpp MenuBarPickerView.h
)
target_link_libraries(BrevixMac PUBLIC BrevixCore PRIVATE Qt6::Widgets Qt6::Svg)
