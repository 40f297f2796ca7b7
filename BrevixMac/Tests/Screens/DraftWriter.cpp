// SPDX-License-Identifier: GPL-3.0-or-later
// Stores draft after draft until it is killed, and reports the number of each once it is on disk:
// draft_writer FOLDER
#include "DraftStore.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc != 2)
        return 64;
    DraftStore store(QString::fromLocal8Bit(argv[1]));
    for (int number = 1;; ++number) {
        EditorDraft draft;
        draft.title = QString::number(number);
        draft.text = QString(draft.title + u' ').repeated(20'000);
        store.store({DraftStore::Form::skill, DraftStore::Place::current, QStringLiteral("user")}, draft);
        store.waitForWrites();
        std::printf("%d\n", number);
        std::fflush(stdout);
    }
}
