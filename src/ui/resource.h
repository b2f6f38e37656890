// Numbers of the program's resources, shared with the resource script.
#pragma once

#define PROGRESS_DIALOG 101
#define PROGRESS_ICON 103
#define PROGRESS_TEXT 1001
