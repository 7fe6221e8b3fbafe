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
#include "QzAnno/model/QzAnno.h"
#include "QzAnno/model/QzAnnoKey.h"
#include "QzAnno/model/QzAnnoString.h"
#include "QzAnno/model/QzMutableAnnoString.h"
#include "QzAnno/model/QzToken.h"
#include "QzAnno/palette/AttributeNames.h"
#include "QzAnno/palette/QzAnnoPalette.h"
#include "QzAnno/palette/QzBBoxInfo.h"
#include "QzAnno/palette/QzLog.h"
#include "QzAnno/platform/foundation/Callback.h"
#include "QzAnno/platform/foundation/Files.h"
#include "QzAnno/platform/foundation/Limits.h"
#include "QzAnno/platform/foundation/NSAlertPanel.h"
#include "QzAnno/platform/foundation/NSArchiver.h"
#include "QzAnno/platform/foundation/NSArray.h"
#include "QzAnno/platform/foundation/NSCoding.h"
#include "QzAnno/platform/foundation/NSData.h"
#include "QzAnno/platform/foundation/NSDictionary.h"
#include "QzAnno/platform/foundation/NSGeometry.h"
#include "QzAnno/platform/foundation/NSLog.h"
#include "QzAnno/platform/foundation/NSNotificationCenter.h"
#include "QzAnno/platform/foundation/NSNumber.h"
#include "QzAnno/platform/foundation/NSObject.h"
#include "QzAnno/platform/foundation/NSSet.h"
#include "QzAnno/platform/foundation/NSString.h"
#include "QzAnno/platform/foundation/NSUnarchiver.h"
#include "QzAnno/platform/foundation/NSUndoManager.h"
#include "QzAnno/platform/graphics/NSBitmapImageRep.h"
#include "QzAnno/platform/graphics/NSColor.h"
#include "QzAnno/platform/graphics/NSImage.h"
#include "QzAnno/platform/graphics/PNG.h"
#include "QzAnno/platform/text/FontLibrary.h"
#include "QzAnno/platform/text/NSAttributedString.h"
#include "QzAnno/platform/text/NSFont.h"
#include "QzAnno/platform/text/NSLayoutManager.h"
#include "QzAnno/platform/text/NSParagraphStyle.h"
#include "QzAnno/platform/text/NSTextContainer.h"
#include "QzAnno/render/QzAnnoLayoutManager.h"
#include "QzAnno/render/QzAnnoStringToScreen.h"
#include "QzAnno/render/QzScreenTextContainer.h"
#include "QzAnno/render/RenderReport.h"
