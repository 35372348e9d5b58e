#pragma once

// What the program sets up before its first window: its name, its desktop entry and the French
// texts of Qt's own dialogs. No display name: the window manager shows each title as it is set.
void setUpProgram();
