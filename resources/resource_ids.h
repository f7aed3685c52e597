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
#define QVD_PLACE_HOLDER 291  // where a panel goes; in several dialogs

// security_dialogs.rc; an id may mean another control in another dialog
#define QVD_CHECK_SECURITY 206
#define QVD_CHECK_USER_PASSWORD 285
#define QVD_CHECK_OWNER_PASSWORD 286
#define QVD_EDIT_USER_PASSWORD 287
#define QVD_EDIT_OWNER_PASSWORD 288
#define QVD_LIST_LEVEL 290
#define QVD_CHECK_PRINTING_40 206
#define QVD_CHECK_CHANGING_40 293
#define QVD_CHECK_COPYING_40 294
#define QVD_CHECK_COMMENTS_40 295
#define QVD_CHECK_ACCESS_128 292
#define QVD_CHECK_COPYING_128 206
#define QVD_CHECK_METADATA_128 296
#define QVD_LIST_CHANGES_128 297
#define QVD_LIST_PRINTING_128 298

// advanced_dialogs.rc
#define QVD_CHECK_PAGE_COPY 1028
#define QVD_EDIT_TARGET_WIDTH 1020
#define QVD_UP_DOWN_TARGET_WIDTH 1025
#define QVD_LIST_SPECIFICATION 1030
#define QVD_LIST_COMPRESSION 1031
#define QVD_CHECK_RUN 206
#define QVD_RADIO_DEFAULT_APP 207
#define QVD_RADIO_CUSTOM_APP 208
#define QVD_EDIT_APP_PATH 209
#define QVD_EDIT_APP_PARAMETERS 210
#define QVD_BUTTON_BROWSE 211
