#pragma once

#include <QLockFile>
#include <QStringList>
#include <memory>

#include "apps/qzanno-composer/TitleDocument.h"

namespace qz::composer {

/// A copy of what is being edited, in a folder of the composer's own, for the case that the process ends before the
/// user has saved. Each running composer holds one file, locked by its process; a file whose process is gone was left
/// behind by a crash.
class Recovery final {
public:
    /// Claims a file in the folder, which is made. Nothing is written yet.
    explicit Recovery(const QString& folder);
    /// Removes the file: whoever lives to this has saved or discarded.
    ~Recovery();

    /// False, with one line in `error` and a former copy as it was, when it cannot be written.
    bool write(const TitleDocument& document, std::string& error);
    void remove();

    /// The files that crashed composers have left, oldest first.
    static QStringList leftBehind(const QString& folder);
    struct Contents {
        Ref<QzAnnoPalette> palette;
        TitleFile file;
        size_t current = 0;
    };
    /// What such a file holds; none, with one line in `error`, when it cannot be read.
    static std::optional<Contents> read(const QString& path, std::string& error);
    /// Puts the contents of such a file into the document, as unsaved. False, with one line in `error` and the document
    /// as it was, when the file holds none.
    static bool restore(const QString& path, TitleDocument& document, std::string& error);

private:
    QString path_;
    std::unique_ptr<QLockFile> lock_;
};

}  // namespace qz::composer
