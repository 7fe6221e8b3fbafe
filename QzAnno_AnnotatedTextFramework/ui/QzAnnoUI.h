#pragma once

/// @file
/// Everything that a host of QzAnno's desktop side needs, besides QzAnno.h. Used on the thread of the user interface.

#include "QzAnno_AnnotatedTextFramework/ui/AnnotationReporting.h"
#include "QzAnno_AnnotatedTextFramework/ui/QzAnnotationManager.h"
#include "platform/ui/NSApplication.h"
#include "platform/ui/NSTextViewWidget.h"
#include "platform/ui/NSUserDefaults.h"
