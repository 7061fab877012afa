// Control identifiers of the zero-error dialog.
#pragma once

#define IDD_ZERO_ERROR 400
#define IDC_ZERO_ICON 401
#define IDC_ZERO_DETECTOR 402
#define IDC_ZERO_SUGGESTIONS 403
#define IDC_ZERO_RETRY_LINE 404
#define IDC_ZERO_CONNECT_LINE 405
#define IDC_ZERO_RETRY 406
#define IDC_ZERO_CONNECT 407
