#include "apps/qzanno-composer/RecoveryWriter.h"

#include <QFile>
#include <QMetaObject>

#include "QzAnno/platform/foundation/Files.h"

namespace qz::composer {

RecoveryWriter::~RecoveryWriter() {
    if (!thread_.joinable()) return;
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void RecoveryWriter::setFailureHook(QObject* context, std::function<void(const std::string&)> hook) {
    context_ = context;
    failed_ = std::move(hook);
}

void RecoveryWriter::remove() {
    // The first request starts the thread; before that, no file has been written.
    if (thread_.joinable()) ask(std::nullopt);
}

void RecoveryWriter::ask(Request request) {
    {
        const std::lock_guard lock(mutex_);
        waiting_ = std::move(request);
    }
    if (!thread_.joinable()) thread_ = std::thread([this] { work(); });
    changed_.notify_all();
}

bool RecoveryWriter::finish(std::string& error) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return !waiting_ && !isBusy_; });
    error = error_;
    return error.empty();
}

void RecoveryWriter::work() {
    std::unique_lock lock(mutex_);
    while (true) {
        changed_.wait(lock, [this] { return waiting_ || isEnding_; });
        if (!waiting_) return;
        const Request request = *std::exchange(waiting_, std::nullopt);
        isBusy_ = true;
        lock.unlock();
        const std::string error = meet(request);
        if (!error.empty() && context_) {
            QMetaObject::invokeMethod(
                context_, [hook = failed_, error] { hook(error); }, Qt::QueuedConnection);
        }
        lock.lock();
        error_ = error;
        isBusy_ = false;
        changed_.notify_all();
    }
}

std::string RecoveryWriter::meet(const Request& request) const {
    if (!request) {
        QFile::remove(QString::fromStdString(path_));
        return {};
    }
    QByteArray file;
    qsizetype size = 0;
    for (const QByteArray& piece : *request) size += piece.size();
    file.reserve(size);
    for (const QByteArray& piece : *request) file += piece;
    std::string reason;
    const bool isWritten = writeFileAtomically(
        path_, {reinterpret_cast<const uint8_t*>(file.constData()), static_cast<size_t>(file.size())}, &reason);
    return isWritten ? std::string() : path_ + ": " + reason;
}

}  // namespace qz::composer
