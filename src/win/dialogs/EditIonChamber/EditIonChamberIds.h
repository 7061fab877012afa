// Control identifiers of the ion chamber and cal factor editor.
#pragma once

#define IDD_EDIT_ION_CHAMBER 600
#define IDC_EDIT_HEADING 601
#define IDC_EDIT_CHAMBER_LABEL 602
#define IDC_EDIT_CHAMBER 603
#define IDC_EDIT_CAL_FACTOR_LABEL 604
#define IDC_EDIT_CAL_FACTOR 605
#define IDC_EDIT_CONSTANT_LABEL 606
#define IDC_EDIT_MANTISSA 607
#define IDC_EDIT_EXPONENT_LABEL 608
#define IDC_EDIT_EXPONENT 609
#define IDC_EDIT_UNIT 610
#define IDC_EDIT_OK 611
// IDCANCEL: Esc and the close box press it too.
#define IDC_EDIT_CANCEL 2
