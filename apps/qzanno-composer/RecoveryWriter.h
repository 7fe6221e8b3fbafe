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

/// Writes and removes one file on its own thread, which starts with the first request. Of several waiting requests only
/// the last is performed. Call all operations on one thread.
class RecoveryWriter final {
public:
    ~RecoveryWriter();

    void setPath(const std::string& path) { path_ = path; }
    /// Writes the pieces one after another to a temporary file and renames it.
    void write(std::vector<QByteArray> pieces) { ask(std::move(pieces)); }
    void remove();
    bool finish(std::string& error);
    void setFailureHook(QObject* context, std::function<void(const std::string&)> hook);

private:
    // No value means that the file should be removed.
    using Request = std::optional<std::vector<QByteArray>>;

    void ask(Request request);
    void work();
    /// Performs the request and returns an error, or an empty string.
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
