// Numbers of the commands, for the keys (talview.rc) and for the viewer.
#pragma once

#define COMMANDS 1 // the accelerator table

#define COMMAND_EXIT 100
#define COMMAND_OPEN 101
#define COMMAND_RELOAD 102
#define COMMAND_NEXT 103
#define COMMAND_PREVIOUS 104
#define COMMAND_ZOOM_IN 120
#define COMMAND_ZOOM_OUT 121
#define COMMAND_FIT 122
#define COMMAND_FULL_SCALE 123
#define COMMAND_LEFT 124
#define COMMAND_RIGHT 125
#define COMMAND_UP 126
#define COMMAND_DOWN 127
#define COMMAND_METHOD 140
#define COMMAND_MAP 141
