/*
 * A simulated management controller for integration tests, loaded with
 * LD_PRELOAD. Opening "/dev/ipmi0" gives a descriptor of our own (an eventfd);
 * IPMI requests sent on it are recorded and answered from the environment;
 * every other call passes through to the next definition (the C library, or
 * a sanitizer's interceptor).
 *
 * Environment (all optional):
 *   IPMISIM_LOG          file to which every open, request, answer and close
 *                        is appended, one line each
 *   IPMISIM_CC           completion code of the answers (default 0x00)
 *   IPMISIM_GEN          generation byte, the sixth data byte after the
 *                        completion code (default 0x30)
 *
 * Built without sanitizers on purpose: the library is also preloaded into the
 * shell and the module tools the program under test starts.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <linux/ipmi.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <unistd.h>

#define SIM_VISIBLE __attribute__((visibility("default")))

typedef int (*open_fn)(const char*, int, ...);
typedef int (*openat_fn)(int, const char*, int, ...);
typedef int (*open2_fn)(const char*, int);
typedef int (*openat2_fn)(int, const char*, int);
typedef int (*ioctl_fn)(int, unsigned long, ...);
typedef int (*select_fn)(int, fd_set*, fd_set*, fd_set*, struct timeval*);
typedef int (*close_fn)(int);

static pthread_mutex_t g_lock = PTHREAD_MUTEX_INITIALIZER;
static int g_fd = -1;
static int g_pending = 0;
static long g_pending_msgid = 0;
static unsigned char g_pending_netfn = 0;
static unsigned char g_pending_cmd = 0;

static void* next_symbol(const char* name) { return dlsym(RTLD_NEXT, name); }

static int is_device_node(const char* path) {
    return path != NULL && (strcmp(path, "/dev/ipmi0") == 0 || strcmp(path, "/dev/ipmi/0") == 0 ||
                            strcmp(path, "/dev/ipmidev/0") == 0);
}

static unsigned char env_byte(const char* name, unsigned char fallback) {
    const char* value = getenv(name);
    if (value == NULL || value[0] == '\0') return fallback;
    return (unsigned char)strtoul(value, NULL, 0);
}

static void sim_log(const char* format, ...) {
    const char* path = getenv("IPMISIM_LOG");
    if (path == NULL || path[0] == '\0') return;
    char line[1024];
    va_list args;
    va_start(args, format);
    int length = vsnprintf(line, sizeof(line) - 1, format, args);
    va_end(args);
    if (length < 0) return;
    if (length > (int)sizeof(line) - 2) length = (int)sizeof(line) - 2;
    line[length++] = '\n';
    static open_fn real_open;
    if (real_open == NULL) real_open = (open_fn)next_symbol("open");
    int fd = real_open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0) return;
    ssize_t ignored = write(fd, line, (size_t)length);
    (void)ignored;
    static close_fn real_close;
    if (real_close == NULL) real_close = (close_fn)next_symbol("close");
    real_close(fd);
}

/* Only "/dev/ipmi0" is simulated; the other nodes are absent. */
static int sim_open(const char* path, int flags) {
    if (strcmp(path, "/dev/ipmi0") != 0) {
        sim_log("open %s absent", path);
        errno = ENOENT;
        return -1;
    }
    int fd = eventfd(1, EFD_NONBLOCK | ((flags & O_CLOEXEC) ? EFD_CLOEXEC : 0));
    if (fd < 0) return -1;
    pthread_mutex_lock(&g_lock);
    g_fd = fd;
    g_pending = 0;
    pthread_mutex_unlock(&g_lock);
    sim_log("open %s rdwr=%d cloexec=%d", path, (flags & O_ACCMODE) == O_RDWR, (flags & O_CLOEXEC) != 0);
    return fd;
}

static int is_sim_fd(int fd) {
    pthread_mutex_lock(&g_lock);
    int result = fd >= 0 && fd == g_fd;
    pthread_mutex_unlock(&g_lock);
    return result;
}

static mode_t mode_argument(int flags, va_list args) {
    if ((flags & O_CREAT) || (flags & O_TMPFILE) == O_TMPFILE) return (mode_t)va_arg(args, int);
    return 0;
}

/* open, open64, openat and openat64: the device node is ours, any other path
 * goes on to the next definition with the mode, read only when the flags
 * carry one. */
#define SIM_OPEN(name, fn_type, params, args)                   \
    SIM_VISIBLE int name params {                               \
        va_list list;                                           \
        va_start(list, flags);                                  \
        mode_t mode = mode_argument(flags, list);               \
        va_end(list);                                           \
        if (is_device_node(path)) return sim_open(path, flags); \
        static fn_type real;                                    \
        if (real == NULL) real = (fn_type)next_symbol(#name);   \
        return real args;                                       \
    }
SIM_OPEN(open, open_fn, (const char* path, int flags, ...), (path, flags, mode))
SIM_OPEN(open64, open_fn, (const char* path, int flags, ...), (path, flags, mode))
SIM_OPEN(openat, openat_fn, (int dirfd, const char* path, int flags, ...), (dirfd, path, flags, mode))
SIM_OPEN(openat64, openat_fn, (int dirfd, const char* path, int flags, ...), (dirfd, path, flags, mode))

/* The checked variants that fortified builds call. */
#define SIM_OPEN_2(name, fn_type, params, args)                 \
    SIM_VISIBLE int name params {                               \
        if (is_device_node(path)) return sim_open(path, flags); \
        static fn_type real;                                    \
        if (real == NULL) real = (fn_type)next_symbol(#name);   \
        return real args;                                       \
    }
SIM_OPEN_2(__open_2, open2_fn, (const char* path, int flags), (path, flags))
SIM_OPEN_2(__open64_2, open2_fn, (const char* path, int flags), (path, flags))
SIM_OPEN_2(__openat_2, openat2_fn, (int dirfd, const char* path, int flags), (dirfd, path, flags))

static int sim_send(struct ipmi_req* request) {
    struct ipmi_system_interface_addr address;
    memset(&address, 0, sizeof(address));
    if (request->addr != NULL && request->addr_len >= sizeof(address))
        memcpy(&address, request->addr, sizeof(address));
    char data[3 * 256 + 1] = "";
    for (unsigned int i = 0; i < request->msg.data_len && i < 256; ++i)
        snprintf(data + 3 * i, 4, "%02x ", request->msg.data[i]);
    sim_log(
        "send netfn=0x%02x cmd=0x%02x data_len=%u data=%s msgid=%ld addr_type=0x%02x channel=0x%02x lun=%u "
        "addr_len=%u",
        request->msg.netfn, request->msg.cmd, (unsigned)request->msg.data_len, data, request->msgid,
        (unsigned)address.addr_type, (unsigned)address.channel, (unsigned)address.lun, request->addr_len);
    pthread_mutex_lock(&g_lock);
    g_pending = 1;
    g_pending_msgid = request->msgid;
    g_pending_netfn = request->msg.netfn;
    g_pending_cmd = request->msg.cmd;
    pthread_mutex_unlock(&g_lock);
    return 0;
}

static int sim_receive(struct ipmi_recv* received) {
    pthread_mutex_lock(&g_lock);
    int pending = g_pending;
    long msgid = g_pending_msgid;
    unsigned char netfn = g_pending_netfn;
    unsigned char cmd = g_pending_cmd;
    g_pending = 0;
    pthread_mutex_unlock(&g_lock);
    if (!pending) {
        errno = EAGAIN;
        return -1;
    }

    const unsigned char cc = env_byte("IPMISIM_CC", 0x00);
    const unsigned char gen = env_byte("IPMISIM_GEN", 0x30);
    unsigned char answer[7] = {cc, 0x00, 0x00, 0x00, 0x00, 0x00, gen};
    unsigned short length = cc == 0 ? 7 : 1;

    struct ipmi_system_interface_addr from;
    memset(&from, 0, sizeof(from));
    from.addr_type = IPMI_SYSTEM_INTERFACE_ADDR_TYPE;
    from.channel = IPMI_BMC_CHANNEL;
    if (received->addr != NULL && received->addr_len >= sizeof(from)) {
        memcpy(received->addr, &from, sizeof(from));
        received->addr_len = sizeof(from);
    }
    received->recv_type = IPMI_RESPONSE_RECV_TYPE;
    received->msgid = msgid;
    received->msg.netfn = (unsigned char)(netfn | 1);
    received->msg.cmd = cmd;
    unsigned short room = received->msg.data_len;
    unsigned short copied = length < room ? length : room;
    if (received->msg.data != NULL) memcpy(received->msg.data, answer, copied);
    received->msg.data_len = copied;
    sim_log("recv msgid=%ld cc=0x%02x gen=0x%02x data_len=%u", msgid, cc, gen, (unsigned)copied);
    if (copied < length) {
        errno = EMSGSIZE;
        return -1;
    }
    return 0;
}

SIM_VISIBLE int ioctl(int fd, unsigned long request, ...) {
    va_list args;
    va_start(args, request);
    void* argument = va_arg(args, void*);
    va_end(args);
    if (is_sim_fd(fd)) {
        if (request == IPMICTL_SEND_COMMAND) return sim_send((struct ipmi_req*)argument);
        if (request == IPMICTL_RECEIVE_MSG_TRUNC || request == IPMICTL_RECEIVE_MSG)
            return sim_receive((struct ipmi_recv*)argument);
        errno = ENOTTY;
        return -1;
    }
    static ioctl_fn real;
    if (real == NULL) real = (ioctl_fn)next_symbol("ioctl");
    return real(fd, request, argument);
}

SIM_VISIBLE int select(int nfds, fd_set* readfds, fd_set* writefds, fd_set* exceptfds,
                       struct timeval* timeout) {
    pthread_mutex_lock(&g_lock);
    int fd = g_fd;
    int pending = g_pending;
    pthread_mutex_unlock(&g_lock);
    if (fd >= 0 && fd < nfds && fd < FD_SETSIZE && readfds != NULL && FD_ISSET(fd, readfds)) {
        FD_ZERO(readfds);
        if (writefds != NULL) FD_ZERO(writefds);
        if (exceptfds != NULL) FD_ZERO(exceptfds);
        if (!pending) {
            /* No answer is coming: report the time-out without waiting for it. */
            if (timeout != NULL) timeout->tv_sec = timeout->tv_usec = 0;
            return 0;
        }
        FD_SET(fd, readfds);
        return 1;
    }
    static select_fn real;
    if (real == NULL) real = (select_fn)next_symbol("select");
    return real(nfds, readfds, writefds, exceptfds, timeout);
}

SIM_VISIBLE int close(int fd) {
    pthread_mutex_lock(&g_lock);
    int ours = fd >= 0 && fd == g_fd;
    if (ours) {
        g_fd = -1;
        g_pending = 0;
    }
    pthread_mutex_unlock(&g_lock);
    if (ours) sim_log("close");
    static close_fn real;
    if (real == NULL) real = (close_fn)next_symbol("close");
    return real(fd);
}
