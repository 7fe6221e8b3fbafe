#pragma once

/// @file
/// Everything that a host of QzAnno needs, in one header.
///
/// Objects are held by `qz::Ref` and made by the static functions of their class. Operations that refuse return false
/// or an empty value; no exception leaves the library but `std::bad_alloc`. A palette and the pipelines and strings
/// that use it are used from one thread at a time; different palettes with their own pipelines may be used from
/// different threads.

#include "QzAnno/archive/PaletteData.h"
#include "QzAnno/archive/QzAnnoArchiver.h"
#include "QzAnno/archive/QzTokeningArchiver.h"
#include "QzAnno/format/QzAnnoStringFormatter.h"
#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/NameStyleSeparation.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/platform/foundation/Files.h"
#include "QzAnno/platform/foundation/NSAlertPanel.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSDate.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNotificationCenter.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSPropertyListSerialization.h"
#include "QzAnno/platform/graphics/PNG.h"
#include "QzAnno/platform/text/AttributeNames.h"
#include "QzAnno/platform/text/FontLibrary.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "QzAnno/platform/text/NSTextView.h"
#include "QzAnno/render/ExpandRectConstrainedBy.h"
#include "QzAnno/render/QzAnnoLayoutManager.h"
#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "QzAnno/render/QzRasterStrokeFilter.h"
#include "QzAnno/render/QzScreenTextContainer.h"
#include "QzAnno/render/QzTextRender.h"
#include "QzAnno/render/RenderReport.h"
