// Numbers of the commands, for the menu and the keys (talview.rc) and for the viewer; and of other resources.
#pragma once

#define COMMANDS 1 // the accelerator table
#define IDR_MENU 2
#define IDR_ICON 3

#define COMMAND_EXIT 100
#define COMMAND_OPEN 101
#define COMMAND_RELOAD 102
#define COMMAND_NEXT 103 // of the folder
#define COMMAND_PREVIOUS 104
#define COMMAND_CANCEL 105 // stops what is under way, leaves help page or full screen, or exits
#define COMMAND_NEXT_FRAME 106
#define COMMAND_PREVIOUS_FRAME 107
#define COMMAND_SAVE 108
#define COMMAND_COPY 109
#define COMMAND_COPY_VALUE 110
#define COMMAND_PRINT 111

#define COMMAND_ZOOM_IN 120
#define COMMAND_ZOOM_OUT 121
#define COMMAND_FIT 122
#define COMMAND_FULL_SCALE 123
#define COMMAND_LEFT 124
#define COMMAND_RIGHT 125
#define COMMAND_UP 126
#define COMMAND_DOWN 127
#define COMMAND_CENTRE 128
#define COMMAND_FULL_SCREEN 129
#define COMMAND_METHOD 140
#define COMMAND_MAP 141
#define COMMAND_ENGINE 142

#define COMMAND_LIMITS_AUTO 150
#define COMMAND_LIMITS_RESET 151
#define COMMAND_LIMITS_WHOLE 152
#define COMMAND_FLAGS 153
#define COMMAND_WINDOW_NARROWER 154
#define COMMAND_WINDOW_WIDER 155
#define COMMAND_LEVEL_DOWN 156
#define COMMAND_LEVEL_UP 157
#define COMMAND_MASK 158

#define COMMAND_GRID 170
#define COMMAND_COLOR_BAR 171
#define COMMAND_HISTOGRAM 172
#define COMMAND_PROFILE 173
#define COMMAND_OVERLAYS 174

#define COMMAND_MARKER_ADD 180
#define COMMAND_MARKER_DELETE 181
#define COMMAND_MARKER_NEXT 182
#define COMMAND_MARKERS_SAVE 183
#define COMMAND_MARKERS_LOAD 184

#define COMMAND_HELP 190
#define COMMAND_ABOUT 191

#define COMMAND_FIRST_MAP 200 // and one for each further colour map
