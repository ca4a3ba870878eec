#ifndef BQMIPMIDATA_H
#define BQMIPMIDATA_H

// The plain records that carry one IPMI request across the library interface.

// Largest number of bytes either buffer of a command record holds.
#define BQMIPMI_MAX_BUFFER_LENGTH 255

// Status of the device layer: the request went through, or it did not.
#define BQMIPMI_STATUS_SUCCESS 0
#define BQMIPMI_STATUS_FAILURE 320
// Status of the library interface when a session could not be set up or a
// request was not given.
#define BQMIPMI_STATUS_INVALID 257

// Per-request timing.
typedef struct _BQMIPMIConfiguration {
    unsigned int pollInterval;
    unsigned int pollCount;
    // Number of receive attempts and of completion-code retries.
    unsigned int retryCount;
    // Pause between attempts, in milliseconds.
    unsigned int retryInterval;
    unsigned int pollingByte;
    unsigned char pollingStatus;
} BQMIPMIConfiguration;

// The library's timing where neither the caller nor the configuration file gives one.
inline const _BQMIPMIConfiguration kBQMIPMIDefaultConfiguration = {60, 5, 5, 50, 0, 0};

// One request and its response.
typedef struct _BQMIPMICommandData {
    // Null: the library's default configuration applies.
    _BQMIPMIConfiguration* configuration;
    // Valid bytes of requestBuffer, network function and command included.
    unsigned int requestLength;
    // On entry the expected length; on return the valid bytes of responseBuffer.
    unsigned int responseLength;
    // Byte 0 network function, byte 1 command, bytes 2.. the request data.
    unsigned char requestBuffer[BQMIPMI_MAX_BUFFER_LENGTH];
    // Byte 0 network function, byte 1 command, byte 2 completion code, bytes 3.. the data.
    unsigned char responseBuffer[BQMIPMI_MAX_BUFFER_LENGTH];
} BQMIPMICommandData;

#endif
