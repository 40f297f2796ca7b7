// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "GalleryCamera.h"
#include "PickerStage.h"

/// What the gallery's pictures of the picker, the library, the palette and the settings have in common.
namespace GalleryStage {

using Arrange = std::function<void(PickerStage &)>;

/// Opens the panel as the hotkey does.
void open(PickerStage &stage);

/// Lets everything that is on its way arrive, and stills the caret.
void settle(PickerStage &stage);

/// @p before arranges the desk, @p after what is on screen.
void shootPanel(const Camera &camera, const QString &name, const Arrange &before, const Arrange &after);

// Desks

void nothing(PickerStage &stage);
void sample(PickerStage &stage);
/// Long words, long names, markup.
void longTexts(PickerStage &stage);
/// Titles, texts, names and categories that are written from right to left.
void rightToLeft(PickerStage &stage);
/// A library that does not come, for as long as one looks.
void loading(PickerStage &stage);
/// A library that cannot be had.
void failing(PickerStage &stage);
void withoutTarget(PickerStage &stage);

// What is done on screen

/// Waits until it is known that the library cannot be had.
void awaitProblem(PickerStage &stage);

/// Begins to insert the prompt with this identifier.
void startFilling(PickerStage &stage, const QString &id);
void failInsertion(PickerStage &stage);

} // namespace GalleryStage
