#ifndef QVROUTPUTTYPES_H
#define QVROUTPUTTYPES_H

// Which banner of a document is meant.
enum QVR_E_MARGINS { QVR_MARGIN_TOP = 1, QVR_MARGIN_BOTTOM = 2 };

#endif
