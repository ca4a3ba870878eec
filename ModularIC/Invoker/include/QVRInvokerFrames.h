#ifndef QVRINVOKERFRAMES_H
#define QVRINVOKERFRAMES_H

#include <new>

#include "CQVRBadAllocException.h"
#include "CQVRICException.h"

// The handlers every invoker operation ends with: an IC exception gains this
// place as a frame, a plain bad_alloc becomes a CQVRBadAllocException naming
// it, and one that already names its place passes unchanged.
#define QVR_INVOKER_CATCH(sourcePath, function)                                       \
    catch (CQVRICException & e) {                                                     \
        e.AddStackTrace(sourcePath, __LINE__, function);                              \
        throw;                                                                        \
    }                                                                                 \
    catch (CQVRBadAllocException&) {                                                  \
        throw;                                                                        \
    }                                                                                 \
    catch (std::bad_alloc & e) {                                                      \
        throw CQVRBadAllocException::FromBadAlloc(e, sourcePath, __LINE__, function); \
    }

#endif
