#include "bindings/c/Calls.h"
#include "bindings/c/Objects.h"

using namespace qz::c;

qzanno_result qzanno_fonts_open(const char* const* folders, size_t count, qzanno_fonts** out) {
    if (!folders) return failNull("folders");
    if (!out) return failNull("out");
    return guarded([=] {
        silenceLogByDefault();
        std::vector<std::string> paths;
        for (size_t i = 0; i < count; ++i) {
            if (!folders[i]) return failNull("folders[" + std::to_string(i) + "]");
            paths.emplace_back(folders[i]);
        }
        std::vector<qz::FontProblem> problems;
        auto made = std::make_unique<qzanno_fonts>();
        made->library = qz::FontLibrary::withDirectories(paths, &problems);
        for (const qz::FontProblem& problem : problems) made->problems.push_back(problem.path + ": " + problem.what);
        if (!made->library)
            return fail(QZANNO_ERROR_FILE,
                        made->problems.empty() ? "a folder of fonts cannot be read" : made->problems.back());
        *out = made.release();
        return QZANNO_OK;
    });
}

void qzanno_fonts_free(qzanno_fonts* fonts) {
    delete fonts;
}

size_t qzanno_fonts_problem_count(const qzanno_fonts* fonts) {
    return fonts ? fonts->problems.size() : 0;
}

const char* qzanno_fonts_problem(const qzanno_fonts* fonts, size_t index) {
    return index < qzanno_fonts_problem_count(fonts) ? fonts->problems[index].c_str() : nullptr;
}
