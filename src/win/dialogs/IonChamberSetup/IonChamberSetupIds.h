// Control identifiers of the ion chamber setup dialog.
#pragma once

#define IDD_ION_CHAMBER_SETUP 500
#define IDC_SETUP_CHAMBERS_LABEL 501
#define IDC_SETUP_CHAMBERS 502
#define IDC_SETUP_CAL_FACTORS_LABEL 503
#define IDC_SETUP_CAL_FACTORS 504
#define IDC_SETUP_CAL_CONSTANT 505
#define IDC_SETUP_EDIT 506
#define IDC_SETUP_DELETE 507
#define IDC_SETUP_CONTINUE 508
// IDCANCEL: Esc and the close box press it too.
#define IDC_SETUP_CANCEL 2
