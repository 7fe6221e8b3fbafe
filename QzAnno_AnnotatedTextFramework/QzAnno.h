#pragma once

/// @file
/// Everything that a host of QzAnno needs, in one header.
///
/// Objects are held by `qz::Ref` and made by the static functions of their class. Operations that refuse return false
/// or an empty value; no exception leaves the library but `std::bad_alloc`. A palette and the pipelines and strings
/// that use it are used from one thread at a time; different palettes with their own pipelines may be used from
/// different threads.

#include "QzAnno_AnnotatedTextFramework/archive/PaletteData.h"
#include "QzAnno_AnnotatedTextFramework/archive/QzAnnoArchiver.h"
#include "QzAnno_AnnotatedTextFramework/archive/QzTokeningArchiver.h"
#include "QzAnno_AnnotatedTextFramework/format/QzAnnoStringFormatter.h"
#include "QzAnno_AnnotatedTextFramework/model/QzMutableAnnoString.h"
#include "QzAnno_AnnotatedTextFramework/palette/AttributeNames.h"
#include "QzAnno_AnnotatedTextFramework/palette/NameStyleSeparation.h"
#include "QzAnno_AnnotatedTextFramework/palette/QzAnnoPalette.h"
#include "QzAnno_AnnotatedTextFramework/palette/QzBBoxInfo.h"
#include "QzAnno_AnnotatedTextFramework/render/ExpandRectConstrainedBy.h"
#include "QzAnno_AnnotatedTextFramework/render/QzAnnoLayoutManager.h"
#include "QzAnno_AnnotatedTextFramework/render/QzAnnoStringToScreen.h"
#include "QzAnno_AnnotatedTextFramework/render/QzRasterStrokeFilter.h"
#include "QzAnno_AnnotatedTextFramework/render/QzScreenTextContainer.h"
#include "QzAnno_AnnotatedTextFramework/render/QzTextRender.h"
#include "QzAnno_AnnotatedTextFramework/render/RenderReport.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/NSAlertPanel.h"
#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/foundation/NSNumber.h"
#include "platform/foundation/NSPropertyListSerialization.h"
#include "platform/graphics/PNG.h"
#include "platform/text/AttributeNames.h"
#include "platform/text/FontLibrary.h"
#include "platform/text/NSParagraphStyle.h"
#include "platform/text/NSTextView.h"
