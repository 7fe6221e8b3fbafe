#pragma once

#include <QLockFile>
#include <QStringList>
#include <memory>

#include "apps/qzanno-composer/RecoveryWriter.h"
#include "apps/qzanno-composer/TitleDocument.h"

namespace qz::composer {

/// A copy of what is being edited, in a folder of the composer's own, for the case that the process ends before the
/// user has saved. Each running composer holds one file, locked by its process; a file whose process is gone was left
/// behind by a crash.
///
/// The file is written on a thread of its own, from bytes that are made where the document is: whoever types waits for
/// the titles alone that have changed since the copy before.
class Recovery final {
public:
    /// Claims a file in the folder, which is made. Nothing is written yet.
    explicit Recovery(const QString& folder);
    /// Removes the file: whoever lives to this has saved or discarded.
    ~Recovery();

    /// Readies the bytes of the titles, so that `write` need not when the user is typing.
    void takeDown(const std::vector<Title>& titles);
    /// Has the document as it is now written, unless another call comes before its turn. False, with one line in
    /// `error` and a former copy as it was, when it has no such form; what goes wrong later is told by the hook.
    bool write(const TitleDocument& document, std::string& error);
    /// Has the file removed.
    void remove();
    /// Waits until all that was asked for is done. False, with one line in `error`, when the last copy was not written.
    bool finish(std::string& error) { return writer_.finish(error); }
    /// Called, with one line, when a copy cannot be written, in the thread of `context` and while that lives.
    void setFailureHook(QObject* context, std::function<void(const std::string&)> hook) {
        writer_.setFailureHook(context, std::move(hook));
    }

    /// The files that crashed composers have left, oldest first.
    static QStringList leftBehind(const QString& folder);
    struct Contents {
        Ref<QzAnnoPalette> palette;
        TitleFile file;
        size_t current = 0;
        std::string titlesFile;
        std::string paletteFile;
    };
    /// What such a file holds; none, with one line in `error`, when it cannot be read.
    static std::optional<Contents> read(const QString& path, std::string& error);
    /// Puts the contents of such a file into the document, as unsaved. False, with one line in `error` and the document
    /// as it was, when the file holds none.
    static bool restore(const QString& path, TitleDocument& document, std::string& error);

private:
    QByteArray takenDown(const Title& title);
    QByteArray keysOf(const QzAnnoPalette& palette) const;

    QString path_;
    std::unique_ptr<QLockFile> lock_;
    // What was taken down last, and its bytes, title by title.
    std::vector<Title> titles_;
    std::vector<QByteArray> bytes_;
    // Titles name their keys by numbers in this order.
    std::vector<Ref<QzAnnoKey>> keys_;
    std::map<Ref<QzAnnoKey>, quint32> numbers_;
    RecoveryWriter writer_;
};

}  // namespace qz::composer
