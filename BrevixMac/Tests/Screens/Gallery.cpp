// SPDX-License-Identifier: GPL-3.0-or-later
// Draws the screens in their states into PNG files, light and dark, at one and two times the size:
//   QT_QPA_PLATFORM=offscreen gallery FOLDER [WORD]
// With a word, only the states whose names contain it.
#include "GalleryPicture.h"

#include <QApplication>
#include <QDir>

#include <cstdio>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    if (argc < 2 || argc > 3 || !QDir().mkpath(QString::fromLocal8Bit(argv[1]))) {
        std::fprintf(stderr, "usage: gallery FOLDER [WORD]\n");
        return 64;
    }
    const QDir folder(QString::fromLocal8Bit(argv[1]));
    const QString word = QString::fromLocal8Bit(argc > 2 ? argv[2] : "");
    const Camera camera{.wants = [&](const QString &name) { return name.contains(word); },
                        .shoot =
                            [&](QWidget &screen, const QString &name, PictureGround ground) {
                                waitUntilStill(screen);
                                savePicture(screen, folder, name, ground);
                            }};
    for (const Theme::Scheme scheme : {Theme::Scheme::light, Theme::Scheme::dark}) {
        Theme::shared().forceScheme(scheme);
        for (const GalleryPart &part : galleryParts)
            part.draw(camera);
    }
    return 0;
}
