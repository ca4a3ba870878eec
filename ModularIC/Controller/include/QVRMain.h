#ifndef QVRMAIN_H
#define QVRMAIN_H

#include <functional>
#include <memory>

#include "CQVRController.h"

typedef std::function<std::unique_ptr<CQVRController>()> QVRControllerFactory;

// The entry point's work: builds a controller, runs it, prints the result's
// message and returns the exit status (0 for 48 and 49, else the result).
// Any exception gives 2; only a CQVRICException is reported, on standard error.
int QVRMain(int argc, char** argv, const QVRControllerFactory& makeController);

#endif
