// Resource ids of the module.
#pragma once

#define IDR_TALIMAGE8GREY 101
#define IDR_TALIMAGECOLOR 102
#define IDR_TALIMAGE16GREY 103
#define IDR_TALIMAGE16RANGE 104
