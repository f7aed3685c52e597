#pragma once

/// The ids of the add-in's resources and of its commands. The resource compiler reads this as well,
/// so they are macros, and numbers without a type.

// registration.rc
#define QVD_SCRIPT_APPLICATION 101
#define QVD_SCRIPT_CLASS 102

// toolbar.rc
#define QVD_BITMAP_BUTTON 212
#define QVD_MENU_BUTTON 213
#define QVD_COMMAND_BUTTON 1  // the toolbar's button, the same as converting the page
#define QVD_COMMAND_CONVERT_PAGE 32785
#define QVD_COMMAND_OPTIONS 32788
#define QVD_COMMAND_CONVERT_SELECTION 32789
