// Control identifiers of the deletion dialog.
#pragma once

#define IDD_DELETE_ION_CHAMBER 700
#define IDC_DELETE_CHAMBERS_LABEL 701
#define IDC_DELETE_CHAMBERS 702
#define IDC_DELETE_CAL_FACTORS_LABEL 703
#define IDC_DELETE_CAL_FACTORS 704
#define IDC_DELETE_CAL_CONSTANT 705
#define IDC_DELETE_WAIT 706
#define IDC_DELETE_DELETE 707
// IDCANCEL: Esc and the close box press it too.
#define IDC_DELETE_CANCEL 2
