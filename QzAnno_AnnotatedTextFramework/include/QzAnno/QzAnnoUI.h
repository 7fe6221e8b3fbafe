#pragma once

/// @file
/// Everything that a host of QzAnno's desktop side needs, besides QzAnno.h. Used on the thread of the user interface.

#include "QzAnno/platform/ui/NSApplication.h"
#include "QzAnno/platform/ui/NSTextViewWidget.h"
#include "QzAnno/platform/ui/NSUserDefaults.h"
#include "QzAnno/ui/AnnotationReporting.h"
#include "QzAnno/ui/QzAnnotationManager.h"
