#include "QzAnno/archive/PaletteData.h"
#include "QzAnno/platform/foundation/Files.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "bindings/c/Calls.h"
#include "bindings/c/Objects.h"

namespace qz::c {
namespace {

/// `place`, unless it is empty, precedes the reason.
qzanno_result makePalette(Ref<NSData> file, const std::string& place, qzanno_palette** out) {
    std::string reason;
    const Ref<QzAnnoPalette> palette = paletteFromData(file, &reason);
    if (!palette) return fail(QZANNO_ERROR_FORMAT, place + reason);
    auto made = std::make_unique<qzanno_palette>();
    made->file = std::move(file);
    for (int32_t priority = palette->maxPriority(); priority > 0; --priority)
        made->names.push_back(palette->annoKeyAtPriority(priority)->name()->utf8());
    *out = made.release();
    return QZANNO_OK;
}

}  // namespace

Ref<QzAnnoPalette> newPalette(const Ref<NSData>& file, const std::shared_ptr<FontLibrary>& fonts) {
    return paletteFromData(file, nullptr, fonts);
}

}  // namespace qz::c

using namespace qz::c;

qzanno_result qzanno_palette_load(const char* path, qzanno_palette** out) {
    if (!path) return failNull("path");
    if (!out) return failNull("out");
    return guarded([=] {
        silenceLogByDefault();
        std::string reason;
        qz::Ref<qz::NSData> file = qz::readFile(path, &reason);
        const std::string place = std::string(path) + ": ";
        if (!file) return fail(QZANNO_ERROR_FILE, place + reason);
        return makePalette(std::move(file), place, out);
    });
}

qzanno_result qzanno_palette_load_memory(const void* bytes, size_t size, qzanno_palette** out) {
    if (!bytes) return failNull("bytes");
    if (!out) return failNull("out");
    return guarded([=] {
        silenceLogByDefault();
        return makePalette(qz::NSData::dataWithBytes(std::string_view(static_cast<const char*>(bytes), size)), "", out);
    });
}

void qzanno_palette_free(qzanno_palette* palette) {
    delete palette;
}

size_t qzanno_palette_annotation_count(const qzanno_palette* palette) {
    return palette ? palette->names.size() : 0;
}

const char* qzanno_palette_annotation_name(const qzanno_palette* palette, size_t index) {
    return index < qzanno_palette_annotation_count(palette) ? palette->names[index].c_str() : nullptr;
}
