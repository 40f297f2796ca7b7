// SPDX-License-Identifier: GPL-3.0-or-later
#include "SkillFileReader.h"

#include "Foundation/Text.h"

#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

namespace {

constexpr size_t chunkSize = 1024UL * 1024;

class Descriptor
{
public:
    explicit Descriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    ~Descriptor()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

QString systemProblem(int error)
{
    const QString reason = QString::fromStdString(std::system_category().message(error));
    return reason + u'.';
}

/// Why a file of this kind is not read; nothing for a plain file.
std::optional<QString> problemOfKind(const struct stat &status)
{
    if (S_ISDIR(status.st_mode))
        return QStringLiteral("It is a folder.");
    if (!S_ISREG(status.st_mode))
        return QStringLiteral("It is not a plain file.");
    if (status.st_size > SkillFileReader::maximumBytes)
        return QStringLiteral("It is larger than 128 MB.");
    return std::nullopt;
}

/// The whole content, or the problem. Reads to the end of the file, whatever size was announced: files of
/// virtual file systems announce none.
std::optional<QString> readAll(int descriptor, QByteArray &bytes, const std::atomic<bool> &isStopped)
{
    qsizetype size = 0;
    while (!isStopped) {
        bytes.resize(size + static_cast<qsizetype>(chunkSize));
        const ssize_t count = ::read(descriptor, bytes.data() + size, chunkSize);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return systemProblem(errno);
        size += count;
        if (size > SkillFileReader::maximumBytes)
            return QStringLiteral("It is larger than 128 MB.");
        if (count == 0)
            break;
    }
    bytes.resize(size);
    return std::nullopt;
}

bool isSameState(const struct stat &one, const struct stat &other)
{
    return one.st_size == other.st_size && one.st_mtim.tv_sec == other.st_mtim.tv_sec &&
           one.st_mtim.tv_nsec == other.st_mtim.tv_nsec;
}

std::optional<QString> readBytes(const QString &path, QByteArray &bytes, const std::atomic<bool> &isStopped,
                                 const std::function<void()> &onceRead)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat before = {};
    // Asked before opening, because opening a pipe or a device may already do something.
    if (::stat(name.constData(), &before) != 0)
        return systemProblem(errno);
    if (auto problem = problemOfKind(before))
        return problem;
    const Descriptor file(::open(name.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (file.get() < 0)
        return systemProblem(errno);
    if (::fstat(file.get(), &before) != 0)
        return systemProblem(errno);
    if (auto problem = problemOfKind(before))
        return problem;
    if (auto problem = readAll(file.get(), bytes, isStopped))
        return problem;
    onceRead();
    struct stat after = {};
    if (::fstat(file.get(), &after) != 0 || !isSameState(before, after))
        return QStringLiteral("It changed while it was being read.");
    return std::nullopt;
}

std::optional<QString> decode(const QByteArray &bytes, QString &text)
{
    if (bytes.contains('\0'))
        return QStringLiteral("It is not a text file.");
    if (!bytes.isValidUtf8())
        return QStringLiteral("It is not encoded in UTF-8.");
    text = QString::fromUtf8(bytes); // without the byte-order mark
    text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    text.replace(u'\r', u'\n');
    if (text.isEmpty())
        return QStringLiteral("It is empty.");
    return std::nullopt;
}

} // namespace

QString SkillFile::nameWithoutExtension() const
{
    const QString base = QFileInfo(fileName).completeBaseName();
    return base.isEmpty() ? fileName : base;
}

/// What the reading thread and the main thread share. The thread may outlive everything else, when a file
/// system hangs.
struct SkillFileReader::Run
{
    std::atomic<bool> isStopped = false;
    std::mutex mutex;
    SkillFileReader *reader; ///< guarded by the mutex; null when nobody waits any more

    explicit Run(SkillFileReader *waiting)
        : reader(waiting)
    {
    }
};

SkillFileReader::SkillFileReader(QObject *parent, Work work, std::chrono::milliseconds deadline)
    : QObject(parent)
    , m_work(std::move(work))
    , m_deadline(this)
{
    m_deadline.setSingleShot(true);
    m_deadline.setInterval(deadline);
    connect(&m_deadline, &QTimer::timeout, this, [this] {
        stop();
        Q_EMIT failed(QStringLiteral("Reading it takes too long."));
    });
}

SkillFileReader::~SkillFileReader()
{
    stop();
}

void SkillFileReader::read(const QString &path)
{
    stop();
    m_run = std::make_shared<Run>(this);
    m_deadline.start();
    std::thread([work = m_work, run = m_run, path] {
        const Result result = work(path, run->isStopped);
        const std::lock_guard lock(run->mutex);
        if (!run->reader)
            return;
        QMetaObject::invokeMethod(
            run->reader, [reader = run->reader, run, result] { reader->onResult(run, result); },
            Qt::QueuedConnection);
    }).detach();
    Q_EMIT isReadingChanged();
}

void SkillFileReader::stop()
{
    if (!m_run)
        return;
    m_deadline.stop();
    m_run->isStopped = true;
    {
        const std::lock_guard lock(m_run->mutex);
        m_run->reader = nullptr;
    }
    m_run.reset();
    Q_EMIT isReadingChanged();
}

void SkillFileReader::onResult(const std::shared_ptr<Run> &run, const Result &result)
{
    if (run != m_run)
        return;
    stop();
    if (result.problem.isEmpty())
        Q_EMIT finished(result.file);
    else
        Q_EMIT failed(result.problem);
}

SkillFileReader::Work SkillFileReader::normalWork()
{
    return [](const QString &path, const std::atomic<bool> &isStopped) { return readFile(path, isStopped); };
}

SkillFileReader::Result SkillFileReader::readFile(const QString &path, const std::atomic<bool> &isStopped)
{
    return readFile(path, isStopped, [] {});
}

SkillFileReader::Result SkillFileReader::readFile(const QString &path, const std::atomic<bool> &isStopped,
                                                  const std::function<void()> &onceRead)
{
    Result result;
    result.file.fileName = QFileInfo(path).fileName();
    QByteArray bytes;
    if (auto problem = readBytes(path, bytes, isStopped, onceRead)) {
        result.problem = *problem;
        return result;
    }
    if (auto problem = decode(bytes, result.file.text)) {
        result.problem = *problem;
        return result;
    }
    const QString trimmed = Text::trimmed(result.file.text);
    result.file.words = Text::wordCount(trimmed);
    result.file.lines = Text::lineCount(trimmed);
    return result;
}
