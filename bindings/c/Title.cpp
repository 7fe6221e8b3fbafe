#include "QzAnno/platform/foundation/NSString.h"
#include "bindings/c/Calls.h"
#include "bindings/c/Objects.h"

using namespace qz::c;

qzanno_result qzanno_title_new(const char* text, qzanno_title** out) {
    if (!text) return failNull("text");
    if (!out) return failNull("out");
    return guarded([=] {
        auto made = std::make_unique<qzanno_title>();
        made->text = text;
        if (made->text.size() > qz::Limits::kTitleUnitsMax)
            return fail(QZANNO_ERROR_ARGUMENT, "the text has " + std::to_string(made->text.size()) +
                                                   " bytes, more than the limit of " +
                                                   std::to_string(qz::Limits::kTitleUnitsMax));
        size_t malformed = 0;
        auto positions = TextPositions::of(made->text, &malformed);
        if (!positions)
            return fail(QZANNO_ERROR_ARGUMENT, "the text is not in UTF-8: its byte " + std::to_string(malformed) +
                                                   " does not begin a character");
        made->positions = std::move(*positions);
        *out = made.release();
        return QZANNO_OK;
    });
}

qzanno_result qzanno_title_copy(const qzanno_title* title, qzanno_title** out) {
    if (!title) return failNull("title");
    if (!out) return failNull("out");
    return guarded([=] {
        *out = std::make_unique<qzanno_title>(*title).release();
        return QZANNO_OK;
    });
}

void qzanno_title_free(qzanno_title* title) {
    delete title;
}

qzanno_result qzanno_title_annotate(qzanno_title* title, const char* annotation, size_t start, size_t length) {
    if (!title) return failNull("title");
    if (!annotation) return failNull("annotation");
    return guarded([=] {
        if (!title->positions.rangeOf({start, length}))
            return fail(QZANNO_ERROR_ARGUMENT, quoted(annotation) + ": bytes " + std::to_string(start) + " to " +
                                                   std::to_string(start + length) +
                                                   " are not whole characters of a text of " +
                                                   std::to_string(title->text.size()) + " bytes");
        title->spans.push_back({annotation, {start, length}});
        return QZANNO_OK;
    });
}

qzanno_result qzanno_title_annotate_all(qzanno_title* title, const char* annotation) {
    if (!title) return failNull("title");
    return qzanno_title_annotate(title, annotation, 0, title->text.size());
}

const char* qzanno_title_text(const qzanno_title* title) {
    return title ? title->text.c_str() : nullptr;
}

size_t qzanno_title_span_count(const qzanno_title* title) {
    return title ? title->spans.size() : 0;
}

qzanno_result qzanno_title_span(const qzanno_title* title, size_t index, qzanno_span* out) {
    if (!title) return failNull("title");
    if (!out) return failNull("out");
    return guarded([=] {
        if (index >= title->spans.size()) return failIndex(index, title->spans.size());
        const qzanno_title::Span& span = title->spans[index];
        *out = {span.annotation.c_str(), span.bytes.start, span.bytes.length};
        return QZANNO_OK;
    });
}
