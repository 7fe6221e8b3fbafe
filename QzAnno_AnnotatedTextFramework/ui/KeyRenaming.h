#pragma once

#include "QzAnno/palette/QzAnnoPalette.h"

namespace qz {

/// Files the annotation under its key, in the palette's own words a change, and gives the key another name, so that one
/// undo takes back both. No name: the key keeps its own. Refused as the palette refuses; a locked palette's keys keep
/// their names too.
bool replaceAnnoNamed(QzAnnoPalette& palette, const Ref<const QzAnno>& anno, const Ref<NSString>& name);

}  // namespace qz
