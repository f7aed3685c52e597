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

// The Options dialog and its pages. The ids of controls count within one dialog.
#define QVD_DIALOG_ADVANCED_PANEL 103
#define QVD_DIALOG_OPTIONS 201
#define QVD_DIALOG_PDF_PAGE 202
#define QVD_DIALOG_ADVANCED 207
#define QVD_DIALOG_SECURITY 215
#define QVD_DIALOG_PERMISSIONS_40 217
#define QVD_DIALOG_PERMISSIONS_128 219

// options_dialog.rc
#define QVD_BUTTON_OK 1
#define QVD_BUTTON_CANCEL 2
#define QVD_BUTTON_RESET 3
#define QVD_TAB_CONTROL 1002
#define QVD_EDIT_WIDTH 1003
#define QVD_UP_DOWN_WIDTH 1004
#define QVD_EDIT_HEIGHT 1005
#define QVD_UP_DOWN_HEIGHT 1007
#define QVD_RADIO_PORTRAIT 1008
#define QVD_RADIO_LANDSCAPE 1009
#define QVD_EDIT_TOP 1010
#define QVD_UP_DOWN_TOP 1011
#define QVD_EDIT_LEFT 1012
#define QVD_UP_DOWN_LEFT 1013
#define QVD_EDIT_BOTTOM 1014
#define QVD_UP_DOWN_BOTTOM 1015
#define QVD_EDIT_RIGHT 1016
#define QVD_UP_DOWN_RIGHT 1017
#define QVD_LIST_UNITS 1028
#define QVD_LIST_PAPER 1029
