// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

/// A text file that was read as a whole.
struct SkillFile
{
    QString fileName;    ///< last part of the path, extension included
    QString text;        ///< without a byte-order mark, lines divided by line feeds alone
    qsizetype words = 0; ///< of the trimmed text, as the lines
    qsizetype lines = 0;

    QString nameWithoutExtension() const;

    bool operator==(const SkillFile &) const = default;
};

/// Reads one text file at a time, each on a thread of its own, so that neither a slow disk nor a large file
/// holds up the main thread. Only plain files: folders, pipes and devices are refused unopened. Main thread
/// only.
class SkillFileReader final : public QObject
{
    Q_OBJECT

public:
    struct Result
    {
        SkillFile file;
        QString problem; ///< a sentence for the user; empty on success
    };

    /// Reads the file at a path; gives up early when the flag is set. Runs on any thread.
    using Work = std::function<Result(const QString &path, const std::atomic<bool> &isStopped)>;

    static constexpr std::chrono::milliseconds normalDeadline{10'000};
    static constexpr qint64 maximumBytes = 128LL * 1024 * 1024;

    explicit SkillFileReader(QObject *parent = nullptr, Work work = normalWork(),
                             std::chrono::milliseconds deadline = normalDeadline);
    ~SkillFileReader() override;

    /// Starts reading; an earlier file that is not finished is forgotten.
    void read(const QString &path);

    /// Forgets the file that is being read.
    void stop();

    bool isReading() const { return m_run != nullptr; }

    static Result readFile(const QString &path, const std::atomic<bool> &isStopped);

    /// The same; @p onceRead is called when everything is read, before the file is looked at again. For
    /// tests.
    static Result readFile(const QString &path, const std::atomic<bool> &isStopped,
                           const std::function<void()> &onceRead);

Q_SIGNALS:
    void isReadingChanged();
    void finished(const SkillFile &file);
    void failed(const QString &problem);

private:
    struct Run;

    static Work normalWork();
    void onResult(const std::shared_ptr<Run> &run, const Result &result);

    Work m_work;
    std::shared_ptr<Run> m_run;
    QTimer m_deadline;
};
