#pragma once

#include <optional>

#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/platform/foundation/NSData.h"
#include "captions/CaptionProblem.h"

namespace qz {

/// The one title of a text file in UTF-8, without annotations. The line end that closes the file is dropped, the others
/// become line feeds. None, with the reason in `error`, for a file in another encoding.
std::optional<Ref<QzMutableAnnoString>> readPlainText(const NSData& file, CaptionProblem* error = nullptr);

}  // namespace qz
