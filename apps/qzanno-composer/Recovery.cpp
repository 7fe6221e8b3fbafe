#include "apps/qzanno-composer/Recovery.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QDir>
#include <QFile>
#include <algorithm>
#include <limits>

#include "QzAnno/platform/foundation/Files.h"
#include "captions/CueSettings.h"
#include "platform/ui/QtValues.h"

namespace qz::composer {
namespace {

constexpr const char* kMagic = "QzAnno recovery 3";
constexpr const char* kEnding = ".recovery";
constexpr double kNoTime = std::numeric_limits<double>::infinity();
constexpr int kClaimsMax = 1000;

QByteArray bytesOf(std::string_view text) {
    return {text.data(), static_cast<qsizetype>(text.size())};
}

std::string readText(QDataStream& stream) {
    QByteArray bytes;
    stream >> bytes;
    return bytes.toStdString();
}

/// A stream that writes into bytes, in the same format for every Qt version.
class Piece {
public:
    Piece() : stream(&bytes, QIODevice::WriteOnly) { stream.setVersion(QDataStream::Qt_6_4); }

    QByteArray bytes;
    QDataStream stream;
};

std::vector<Ref<QzAnnoKey>> readKeys(QDataStream& stream, const QzAnnoPalette& palette) {
    std::vector<Ref<QzAnnoKey>> keys;
    quint32 count = 0;
    stream >> count;
    while (count-- > 0 && stream.status() == QDataStream::Ok) {
        qint32 priority = -1;
        stream >> priority;
        const Ref<NSString> name = NSString::stringWithUTF8String(readText(stream));
        const Ref<QzAnnoKey> key = palette.annoKeyAtPriority(priority);
        keys.push_back(key ? key : QzAnnoKey::initWithName(name));
    }
    return keys;
}

/// Sets the stream's status if it holds no title.
Title readTitle(QDataStream& stream, const std::vector<Ref<QzAnnoKey>>& keys) {
    QString characters;
    quint32 runs = 0;
    stream >> characters >> runs;
    const auto text = QzMutableAnnoString::initWithString(fromQt(characters));
    for (uint64_t place = 0; runs-- > 0 && stream.status() == QDataStream::Ok;) {
        quint32 length = 0, count = 0;
        stream >> length >> count;
        if (place + length > text->length()) stream.setStatus(QDataStream::ReadCorruptData);
        for (; count > 0 && stream.status() == QDataStream::Ok; --count) {
            quint32 key = 0;
            stream >> key;
            if (key >= keys.size())
                stream.setStatus(QDataStream::ReadCorruptData);
            else
                text->addAnno(keys[key], {static_cast<uint32_t>(place), length});
        }
        place += length;
    }
    Title title = {text->copy(), {}, {}};
    double start = kNoTime, end = kNoTime;
    stream >> start >> end;
    if (start != kNoTime) title.start = start;
    if (end != kNoTime) title.end = end;
    CueSource source;
    for (std::string* each : {&source.identifier, &source.settings, &source.payload, &source.preamble})
        *each = readText(stream);
    CaptionProblems ignored;
    source.placement = parseCueSettings(source.settings, 1, ignored);
    title.source = std::make_shared<const CueSource>(std::move(source));
    return title;
}

std::unique_ptr<QLockFile> lockOf(const QString& path) {
    auto lock = std::make_unique<QLockFile>(path + ".lock");
    // A lock never expires: only the end of its process frees it.
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
        writer_.setPath(path.toStdString());
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
    const Ref<NSData> palette = document.palette()->pListData(&error);
    if (!palette) return false;
    takeDown(document.titles());
    Piece head;
    head.stream << QByteArray(kMagic) << bytesOf(palette->view());
    for (const std::string& text :
         {document.titlesFile(), document.paletteFile(), document.file().header, document.file().trailer})
        head.stream << bytesOf(text);
    std::vector<QByteArray> pieces = {head.bytes, keysOf(*document.palette())};
    Piece counts;
    counts.stream << static_cast<quint32>(document.current()) << static_cast<quint32>(bytes_.size());
    pieces.push_back(counts.bytes);
    pieces.insert(pieces.end(), bytes_.begin(), bytes_.end());
    writer_.write(std::move(pieces));
    return true;
}

/// Titles at either end that are the same objects as before, usually all but a few, keep their bytes.
void Recovery::takeDown(const std::vector<Title>& titles) {
    const auto isSame = [](const Title& one, const Title& other) {
        return one.text == other.text && one.source == other.source && one.start == other.start && one.end == other.end;
    };
    const auto first = std::ranges::mismatch(titles, titles_, isSame);
    const auto last = std::mismatch(titles.rbegin(), std::make_reverse_iterator(first.in1), titles_.rbegin(),
                                    std::make_reverse_iterator(first.in2), isSame);
    std::vector<QByteArray> changed;
    for (auto title = first.in1; title != last.first.base(); ++title) changed.push_back(takenDown(*title));
    const auto from = bytes_.begin() + (first.in2 - titles_.begin());
    const auto to = bytes_.begin() + (last.second.base() - titles_.begin());
    const auto place = bytes_.erase(from, to);
    bytes_.insert(place, changed.begin(), changed.end());
    titles_ = titles;
}

QByteArray Recovery::takenDown(const Title& title) {
    Piece piece;
    const std::u16string_view text = title.text->string()->characters();
    piece.stream << QString(reinterpret_cast<const QChar*>(text.data()), static_cast<qsizetype>(text.size()));
    const std::vector<QzAnnoString::Run> runs = title.text->runs();
    piece.stream << static_cast<quint32>(runs.size());
    for (const QzAnnoString::Run& run : runs) {
        const auto& keys = run.keys->objects<QzAnnoKey>();
        piece.stream << static_cast<quint32>(run.range.length) << static_cast<quint32>(keys.size());
        for (const Ref<QzAnnoKey>& key : keys) {
            const auto [number, isNew] = numbers_.try_emplace(key, static_cast<quint32>(keys_.size()));
            if (isNew) keys_.push_back(key);
            piece.stream << number->second;
        }
    }
    piece.stream << title.start.value_or(kNoTime) << title.end.value_or(kNoTime);
    const CueSource source = title.source ? *title.source : CueSource();
    for (const std::string& each : {source.identifier, source.settings, source.payload, source.preamble})
        piece.stream << bytesOf(each);
    return piece.bytes;
}

/// Identifies keys by priority, since names need not be unique, and keys that the palette does not have by name.
QByteArray Recovery::keysOf(const QzAnnoPalette& palette) const {
    Piece piece;
    piece.stream << static_cast<quint32>(keys_.size());
    for (const Ref<QzAnnoKey>& key : keys_)
        piece.stream << static_cast<qint32>(palette.lookupPrio(key)) << bytesOf(key->name()->utf8());
    return piece.bytes;
}

void Recovery::remove() {
    writer_.remove();
}

QStringList Recovery::leftBehind(const QString& folder) {
    QStringList paths;
    const QDir directory(folder);
    // Taking and releasing the lock of a dead process removes it.
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
    QDataStream stream(bytesOf(file->view()));
    stream.setVersion(QDataStream::Qt_6_4);
    Contents contents;
    const bool isOurs = readText(stream) == kMagic;
    const std::string palette = isOurs ? readText(stream) : std::string();
    if (isOurs) contents.palette = QzAnnoPalette::paletteFromPListData(*NSData::dataWithBytes(palette), &reason);
    if (contents.palette) {
        for (std::string* text :
             {&contents.titlesFile, &contents.paletteFile, &contents.file.header, &contents.file.trailer})
            *text = readText(stream);
        const std::vector<Ref<QzAnnoKey>> keys = readKeys(stream, *contents.palette);
        quint32 current = 0, count = 0;
        stream >> current >> count;
        contents.current = current;
        while (count-- > 0 && stream.status() == QDataStream::Ok) {
            Title title = readTitle(stream, keys);
            if (stream.status() == QDataStream::Ok) contents.file.titles.push_back(std::move(title));
        }
    }
    if (!contents.file.titles.empty() && stream.status() == QDataStream::Ok) return contents;
    error = path.toStdString() + ": is not a readable recovery file of this version" +
            (reason.empty() ? "" : ": " + reason);
    return {};
}

bool Recovery::restore(const QString& path, TitleDocument& document, std::string& error) {
    auto contents = read(path, error);
    if (!contents) return false;
    document.replacePalette(contents->palette, contents->paletteFile);
    document.setTitles(std::move(contents->file));
    document.setTitlesFile(contents->titlesFile);
    document.show(contents->current);
    document.undoManager()->removeAllActions();
    document.markUnsaved();
    return true;
}

}  // namespace qz::composer
