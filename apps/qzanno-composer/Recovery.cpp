#include "apps/qzanno-composer/Recovery.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <limits>

#include "platform/foundation/Files.h"

namespace qz::composer {
namespace {

constexpr const char* kMagic = "QzAnno recovery 2";
constexpr const char* kEnding = ".recovery";
constexpr double kNoTime = std::numeric_limits<double>::infinity();
constexpr int kClaimsMax = 1000;

QByteArray bytesOf(const NSData& data) {
    return {data.view().data(), static_cast<qsizetype>(data.view().size())};
}

Ref<NSData> dataOf(const QByteArray& bytes) {
    return NSData::dataWithBytes(std::string_view(bytes.constData(), static_cast<size_t>(bytes.size())));
}

QByteArray bytesOf(const std::string& text) {
    return {text.data(), static_cast<qsizetype>(text.size())};
}

void readText(QDataStream& stream, std::string& text) {
    QByteArray bytes;
    stream >> bytes;
    text.assign(bytes.constData(), static_cast<size_t>(bytes.size()));
}

std::unique_ptr<QLockFile> lockOf(const QString& path) {
    auto lock = std::make_unique<QLockFile>(path + ".lock");
    // Only the end of its process frees a lock, however long it is held.
    lock->setStaleLockTime(0);
    return lock;
}

}  // namespace

Recovery::Recovery(const QString& folder) {
    QDir().mkpath(folder);
    for (int i = 0; i < kClaimsMax; ++i) {
        const QString path =
            QDir(folder).filePath(QString("%1-%2%3").arg(QCoreApplication::applicationPid()).arg(i).arg(kEnding));
        if (QFile::exists(path)) continue;
        auto lock = lockOf(path);
        if (!lock->tryLock(0)) {
            if (lock->error() != QLockFile::LockFailedError) return;
            continue;
        }
        path_ = path;
        lock_ = std::move(lock);
        return;
    }
}

Recovery::~Recovery() {
    remove();
}

bool Recovery::write(const TitleDocument& document, std::string& error) {
    if (path_.isEmpty()) {
        error = "no recovery file can be made in the folder of the settings; save often";
        return false;
    }
    const Ref<NSData> archive = archiveOfTitles(document.titles(), document.palette(), error);
    const Ref<NSData> palette = document.palette()->pListData(&error);
    if (!archive || !palette) return false;
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_4);
    stream << QByteArray(kMagic) << bytesOf(*archive) << bytesOf(*palette) << static_cast<quint32>(document.current());
    for (const Title& title : document.titles()) {
        stream << title.start.value_or(kNoTime) << title.end.value_or(kNoTime);
        const CueSource source = title.source ? *title.source : CueSource();
        for (const std::string& text : {source.identifier, source.settings, source.payload, source.preamble})
            stream << bytesOf(text);
    }
    stream << bytesOf(document.file().header) << bytesOf(document.file().trailer);
    std::string reason;
    const bool isWritten = writeFileAtomically(
        path_.toStdString(), {reinterpret_cast<const uint8_t*>(bytes.constData()), static_cast<size_t>(bytes.size())},
        &reason);
    if (!isWritten) error = path_.toStdString() + ": " + reason;
    return isWritten;
}

void Recovery::remove() {
    if (!path_.isEmpty()) QFile::remove(path_);
}

QStringList Recovery::leftBehind(const QString& folder) {
    QStringList paths;
    const QDir directory(folder);
    // Taking the lock of a process that is gone, and letting it go, removes it.
    for (const QString& name : directory.entryList({QString("*") + kEnding + ".lock"}, QDir::Files)) {
        lockOf(directory.filePath(name).chopped(5))->tryLock(0);
    }
    for (const QString& name :
         directory.entryList({QString("*") + kEnding}, QDir::Files, QDir::Time | QDir::Reversed)) {
        const QString path = directory.filePath(name);
        if (lockOf(path)->tryLock(0)) paths.push_back(path);
    }
    return paths;
}

std::optional<Recovery::Contents> Recovery::read(const QString& path, std::string& error) {
    std::string reason;
    const Ref<NSData> file = readFile(path.toStdString(), &reason);
    if (!file) {
        error = path.toStdString() + ": " + reason;
        return {};
    }
    QDataStream stream(bytesOf(*file));
    stream.setVersion(QDataStream::Qt_6_4);
    QByteArray magic, archive, list;
    quint32 current = 0;
    stream >> magic >> archive >> list >> current;
    const bool isOurs = stream.status() == QDataStream::Ok && magic == kMagic;
    const Ref<QzAnnoPalette> palette = isOurs ? QzAnnoPalette::paletteFromPListData(*dataOf(list), &reason) : nullptr;
    auto titles = palette ? titlesOfArchive(dataOf(archive), palette, reason) : std::nullopt;
    if (!titles) {
        error = path.toStdString() + ": is no recovery file of this version that can be read" +
                (reason.empty() ? "" : ": " + reason);
        return {};
    }
    // A file cut short still holds titles; what is missing behind them stays empty.
    for (Title& title : titles->titles) {
        double start = kNoTime, end = kNoTime;
        CueSource source;
        stream >> start >> end;
        for (std::string* text : {&source.identifier, &source.settings, &source.payload, &source.preamble})
            readText(stream, *text);
        if (stream.status() != QDataStream::Ok) break;
        if (start != kNoTime) title.start = start;
        if (end != kNoTime) title.end = end;
        title.source = std::make_shared<const CueSource>(std::move(source));
    }
    readText(stream, titles->header);
    readText(stream, titles->trailer);
    return Contents{palette, std::move(*titles), current};
}

bool Recovery::restore(const QString& path, TitleDocument& document, std::string& error) {
    auto contents = read(path, error);
    if (!contents) return false;
    document.replacePalette(contents->palette);
    document.setTitles(std::move(contents->file));
    document.show(contents->current);
    document.markUnsaved();
    return true;
}

}  // namespace qz::composer
