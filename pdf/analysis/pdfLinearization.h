#pragma once
#include "platform/ivStatus.h"

class ivPdf;

// Decides whether the file is linearized and, if so, checks the linearization parameter
// dictionary (role 51) against the file and the pages and marks the hint stream (role 52).
// 1 when the file is not linearized (no message), 0 after the check.
ivStatus CheckLinearization(ivPdf& doc);
