#pragma once

#include <QLockFile>
#include <QStringList>
#include <memory>

#include "apps/qzanno-composer/RecoveryWriter.h"
#include "apps/qzanno-composer/TitleDocument.h"

namespace qz::composer {

/// Keeps a copy of what is being edited, in the composer's own folder, in case the process ends before the user has
/// saved. Each running composer has one file, locked by its process; a file whose process has ended was left by a
/// crash.
///
/// The file is written on its own thread, from bytes made on the document's thread, so typing waits only for the titles
/// that have changed since the last copy.
class Recovery final {
public:
    /// Claims a file in the folder, creating the folder if necessary. Nothing is written yet.
    explicit Recovery(const QString& folder);
    /// Removes the file: on a normal exit the user has saved or discarded.
    ~Recovery();

    /// Prepares the bytes of the titles, so that `write` need not while the user is typing.
    void takeDown(const std::vector<Title>& titles);
    /// Queues the current document for writing, unless a later call replaces it. Returns false, with one line in
    /// `error` and the former copy kept, if the document cannot be stored; later failures go to the hook.
    bool write(const TitleDocument& document, std::string& error);
    /// Queues the removal of the file.
    void remove();
    /// Waits until everything queued is done. Returns false, with one line in `error`, if the last copy was not
    /// written.
    bool finish(std::string& error) { return writer_.finish(error); }
    /// Called with one line if a copy cannot be written, on the thread of `context` and while that lives.
    void setFailureHook(QObject* context, std::function<void(const std::string&)> hook) {
        writer_.setFailureHook(context, std::move(hook));
    }

    /// The files left by crashed composers, oldest first.
    static QStringList leftBehind(const QString& folder);
    struct Contents {
        Ref<QzAnnoPalette> palette;
        TitleFile file;
        size_t current = 0;
        std::string titlesFile;
        std::string paletteFile;
    };
    /// The contents of such a file; no value, with one line in `error`, if it cannot be read.
    static std::optional<Contents> read(const QString& path, std::string& error);
    /// Loads the contents of such a file into the document, as unsaved. Returns false, with one line in `error` and the
    /// document unchanged, if the file cannot be read.
    static bool restore(const QString& path, TitleDocument& document, std::string& error);

private:
    QByteArray takenDown(const Title& title);
    QByteArray keysOf(const QzAnnoPalette& palette) const;

    QString path_;
    std::unique_ptr<QLockFile> lock_;
    // The titles last prepared, and their bytes.
    std::vector<Title> titles_;
    std::vector<QByteArray> bytes_;
    // Titles refer to their keys by index in this vector.
    std::vector<Ref<QzAnnoKey>> keys_;
    std::map<Ref<QzAnnoKey>, quint32> numbers_;
    RecoveryWriter writer_;
};

}  // namespace qz::composer
