// Resource ids of talxrend.dll; those of its messages are in com/message_ids.h.
#pragma once

#define IDR_TALRENDERENGINE 101
#define IDR_TALGDIRENDERENGINE 102
