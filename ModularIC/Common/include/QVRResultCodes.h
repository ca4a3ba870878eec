#ifndef QVRRESULTCODES_H
#define QVRRESULTCODES_H

// Result codes of a run. Each is also the process exit status, except the two
// progress answers, which exit with 0.
constexpr unsigned int QVR_RESULT_SUCCESS = 0;
constexpr unsigned int QVR_RESULT_RECORDS_COLLECTED = 1;
constexpr unsigned int QVR_RESULT_COMPLETE_FAILURE = 2;
constexpr unsigned int QVR_RESULT_ANOTHER_INSTANCE = 3;
constexpr unsigned int QVR_RESULT_LOCK_ERROR = 4;
constexpr unsigned int QVR_RESULT_INVALID_OPTION = 5;
constexpr unsigned int QVR_RESULT_INVALID_LOG_FILE = 6;
constexpr unsigned int QVR_RESULT_INVALID_CONFIG_FILE = 7;
constexpr unsigned int QVR_RESULT_BDIR_PATH_INVALID = 11;
constexpr unsigned int QVR_RESULT_BDIR_NOT_WRITABLE = 12;
constexpr unsigned int QVR_RESULT_ARGUMENT_LIST_FAILED = 21;
constexpr unsigned int QVR_RESULT_INVALID_ENCODING = 22;
constexpr unsigned int QVR_RESULT_REQUIRES_ARGUMENT = 23;
constexpr unsigned int QVR_RESULT_SHOULD_NOT_HAVE_ARGUMENT = 24;
constexpr unsigned int QVR_RESULT_DEPENDENT_OPTION_MISSING = 25;
constexpr unsigned int QVR_RESULT_INVALID_OUTPUT_FORMAT = 32;
constexpr unsigned int QVR_RESULT_INVALID_ARGUMENT = 35;
constexpr unsigned int QVR_RESULT_PROGRESS_WRITTEN = 48;
constexpr unsigned int QVR_RESULT_NO_INSTANCE_ACTIVE = 49;
constexpr unsigned int QVR_RESULT_PROGRESS_FAILED = 50;
constexpr unsigned int QVR_RESULT_INVALID_ARGUMENT_2 = 51;
constexpr unsigned int QVR_RESULT_INVALID_ARGUMENT_3 = 52;
// Standard output was closed by its reader: ended as a SIGPIPE would have, silently.
constexpr unsigned int QVR_RESULT_OUTPUT_CLOSED = 128 + 13;

#endif
