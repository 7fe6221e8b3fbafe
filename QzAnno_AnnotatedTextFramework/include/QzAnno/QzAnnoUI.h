#pragma once

/// @file
/// Everything that a host of QzAnno's desktop classes needs, in addition to QzAnno.h. Use it on the user interface's
/// thread only.

#include "QzAnno/platform/ui/NSApplication.h"
#include "QzAnno/platform/ui/NSTextViewWidget.h"
#include "QzAnno/platform/ui/NSUserDefaults.h"
#include "QzAnno/ui/AnnotationReporting.h"
#include "QzAnno/ui/QzAnnotationManager.h"
