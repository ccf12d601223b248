// talxrend for C++20: what an owner of a render engine would otherwise write by hand.
//
// Nothing here hides the COM interfaces of talxrend.h and talxstd.h: every object gives its interface away,
// and either way of calling may be used at any time. The headers below may also be included one by one. All
// of them need the system libraries ole32, oleaut32, gdi32, user32, uuid and windowscodecs.
//
// All objects belong to the thread that made them, with the exceptions that are named.
#pragma once

#include "talxrend/com.h"        // the apartment, creating objects, DLLs beside the program
#include "talxrend/engine.h"     // an engine with its window and layers; updates and draw contexts as scopes
#include "talxrend/failure.h"    // HRESULTs as exceptions; keeping exceptions out of the system's code
#include "talxrend/image.h"      // images with memory of their own, or around the owner's
#include "talxrend/safe_array.h" // colour maps from and to spans
#include "talxrend/target.h"     // render targets, and pictures into files
