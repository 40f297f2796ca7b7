// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/// One thing that Brevix needs of the session, and whether it works. A value.
struct DoctorRow
{
    enum class State {
        works,
        degraded, ///< works, but not everywhere
        fails,
        unknown ///< there was nothing to try it on
    };

    QString id; ///< for programs; never changes
    QString title;
    State state = State::unknown;
    QString reason; ///< what was found, as a sentence
    QString fix;    ///< what to do about it; empty when there is nothing to do

    bool operator==(const DoctorRow &) const = default;
};

/// "works", "degraded", "fails" or "unknown".
QString name(DoctorRow::State state);

/// What an examination has found. A value.
struct DoctorReport
{
    /// Whose view it is. Only the running instance knows what it holds.
    enum class Source {
        instance,      ///< that of the running Brevix
        standalone,    ///< that of a process that only examines; no Brevix runs
        silentInstance ///< the same beside a Brevix that runs and does not answer
    };

    Source source = Source::instance;
    QString session; ///< what kind of session it is
    QList<DoctorRow> rows;

    bool hasFailure() const;

    QByteArray toJson() const;
    /// Nothing when @p json is no report.
    static std::optional<DoctorReport> fromJson(const QByteArray &json);

    /// For a terminal of @p columns characters; 0 does not wrap. Ends with a line feed.
    QString toText(int columns) const;

    bool operator==(const DoctorReport &) const = default;
};
