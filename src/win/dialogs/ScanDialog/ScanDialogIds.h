// Control identifiers of the scan dialog.
#pragma once

#define IDD_SCAN 200
#define IDC_SCAN_IMAGE 201
#define IDC_SCAN_LABEL 202
#define IDC_SCAN_STOP 203
