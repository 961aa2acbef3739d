#pragma once

// Everything that the library offers, by one include.

#include "quorvel/base/DataBuffer.h"
#include "quorvel/base/Export.h"
#include "quorvel/base/IndentedLog.h"
#include "quorvel/base/LogBase.h"
#include "quorvel/base/LogContextExitor.h"
#include "quorvel/base/NullLog.h"
#include "quorvel/base/StreamLog.h"
#include "quorvel/base/StringBuffer.h"
#include "quorvel/base/TextLog.h"
#include "quorvel/base/qvHelpers.h"
#include "quorvel/names/CharsetNaming.h"
#include "quorvel/names/Psdk.h"
#include "quorvel/pages/ContentCoding.h"
#include "quorvel/pages/HashConvert.h"
#include "quorvel/pages/QuorvelBzip2.h"
#include "quorvel/pages/UnicodeLookup.h"
#include "quorvel/support/EncodingConvert.h"
#include "quorvel/unicode/Japanese.h"
#include "quorvel/unicode/Korean.h"
#include "quorvel/unicode/_qvUtf.h"
