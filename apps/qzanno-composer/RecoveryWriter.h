#pragma once

#include <QByteArray>
#include <QObject>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace qz::composer {

/// Writes and removes one file on a thread of its own, which begins with the first request. Of several requests that
/// wait the last one alone is met. All operations are called on one thread.
class RecoveryWriter final {
public:
    ~RecoveryWriter();

    void setPath(const std::string& path) { path_ = path; }
    /// The pieces one after the other, written beside the file and renamed.
    void write(std::vector<QByteArray> pieces) { ask(std::move(pieces)); }
    void remove();
    bool finish(std::string& error);
    void setFailureHook(QObject* context, std::function<void(const std::string&)> hook);

private:
    // Nothing to write: the file is to be removed.
    using Request = std::optional<std::vector<QByteArray>>;

    void ask(Request request);
    void work();
    /// Returns what went wrong.
    std::string meet(const Request& request) const;

    std::string path_;
    QObject* context_ = nullptr;
    std::function<void(const std::string&)> failed_;
    std::thread thread_;
    std::mutex mutex_;
    std::condition_variable changed_;
    // The rest is guarded by the mutex.
    std::optional<Request> waiting_;
    bool isBusy_ = false;
    bool isEnding_ = false;
    std::string error_;
};

}  // namespace qz::composer
