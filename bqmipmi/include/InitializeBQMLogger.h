#ifndef INITIALIZEBQMLOGGER_H
#define INITIALIZEBQMLOGGER_H

// Switches the IPMI library's logging on when the marker file "kpxdebuglog"
// exists in the current directory: lines go to "bqmipmi_internal.log" and
// "bqmipmi.log" there. Without the marker nothing is opened. Returns whether
// logging is on.
bool InitializeBQMLogger();

#endif
