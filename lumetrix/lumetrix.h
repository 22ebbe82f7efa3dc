/* The logging library of the gateway. A process has one logger; a thread of the library writes its
 * lines to daily files.
 *
 *   lumetrix_logger* logger = lumetrix_get_logger();
 *   lumetrix_set_rotation_with_date(logger, 8);
 *   lumetrix_set_pool_size(logger, 1000);
 *   lumetrix_set_output_level(logger, LUMETRIX_INFO);
 *   lumetrix_set_output_dir(logger, "/var/log/gateway", "Gateway");
 *   lumetrix_log(logger, "GW", LUMETRIX_INFO, "started");
 *   lumetrix_release(logger);
 *
 * A line consists of tab-separated fields:
 *
 *   _dt:20240229T235959.123+01:00  _l:info  _th:4711  _m:Quorin5  msg:started
 *
 * These are the local time with milliseconds and UTC offset, the level, the ID of the calling
 * thread, the module and the message. In the message a line feed is written as \n, a carriage
 * return as \r, a tab as \t, a backslash as \\ and any other control character as \x followed by
 * two hexadecimal digits, so a message is always a single field of a single line.
 *
 * Unless stated otherwise, the following applies to all functions:
 *  - Strings are NUL-terminated UTF-8 and are copied before the function returns.
 *  - Functions are thread-safe.
 *  - A function does nothing if the handle was not returned by lumetrix_get_logger, if the logger
 *    is released, or if a string is null.
 *  - Until the output directory is set, the library holds the last 1024 lines.
 *  - Functions do not report errors. If the log cannot be written (missing permission, disk full),
 *    the library writes one line to standard error, drops lines and retries every 10 seconds. When
 *    writing succeeds again, it logs that lines are missing.
 *  - The writer thread does not survive fork(): a child process must not use the logger.
 */
#ifndef LUMETRIX_H
#define LUMETRIX_H

#ifdef _WIN32
#ifdef LUMETRIX_BUILD
#define LUMETRIX_API __declspec(dllexport)
#else
#define LUMETRIX_API __declspec(dllimport)
#endif
#else
#define LUMETRIX_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct lumetrix_logger lumetrix_logger;

/* Level numbers. A number below LUMETRIX_DEBUG is treated as LUMETRIX_DEBUG, one above
 * LUMETRIX_ERROR as LUMETRIX_ERROR, so errors cannot be disabled. The level names in a line are
 * "debug", "info", "warning" and "error". */
enum { LUMETRIX_DEBUG = 2, LUMETRIX_INFO = 3, LUMETRIX_WARN = 4, LUMETRIX_ERROR = 5 };

/* Returns the logger of the process, always the same handle. The first call, and the first call
 * after lumetrix_release, starts the logger and its writer thread with default settings. Returns
 * null if the thread cannot be started. The library stays loaded until the logger is released, even
 * if the host unloads it. */
LUMETRIX_API lumetrix_logger* lumetrix_get_logger(void);

/* Same as lumetrix_get_logger. */
LUMETRIX_API lumetrix_logger* lumetrix_create(void);

/* Writes all queued lines, ends the writer thread and closes the file. If no output directory was
 * set, writes the held lines to standard error. Waits for concurrent calls of other functions;
 * later calls do nothing until lumetrix_get_logger starts the logger again. Afterwards the library
 * may be unloaded. A process that exits without calling this function may lose its last lines. */
LUMETRIX_API void lumetrix_release(lumetrix_logger* logger);

/* Queues a message of any length. `name` must not be null but is not logged. Blocks while the queue
 * is full (see lumetrix_set_pool_size); lines are never dropped because of a full queue. Returns at
 * once if `level` is below the output level. */
LUMETRIX_API void lumetrix_log(lumetrix_logger* logger, const char* name, int level,
                               const char* message);

/* Sets the log file to DIRECTORY/BASE_NAME_YYYY-MM-DD.log; see lumetrix_set_rotation for the names
 * used with rotation by size. Appends to an existing file. Creates the directory and its parents if
 * they are missing. An empty `directory` is the current directory; an empty `base_name` does
 * nothing. The first call also writes the held lines, except those below the output level. */
LUMETRIX_API void lumetrix_set_output_dir(lumetrix_logger* logger, const char* directory,
                                          const char* base_name);

/* Sets the lowest level that is logged. Default: LUMETRIX_DEBUG. */
LUMETRIX_API void lumetrix_set_output_level(lumetrix_logger* logger, int level);

/* Copies every line to standard output if `enabled` is not 0, with a coloured level if it is a
 * terminal. Default: 0. If standard output is a pipe that is not read, writing to it blocks the log
 * and, once the queue is full, the callers of lumetrix_log. */
LUMETRIX_API void lumetrix_set_enabled_console_out(lumetrix_logger* logger, int enabled);

/* Sets the capacity of the queue, 1 to 65536 lines (65536 take about 30 MB). A larger number is
 * treated as 65536, a number below 1 as the default, 1024. Writes the queued lines first. */
LUMETRIX_API void lumetrix_set_pool_size(lumetrix_logger* logger, int lines);

/* Selects rotation by size. The log file is BASE_NAME.log. Before a line would make it larger than
 * `max_bytes`, it is renamed to BASE_NAME.1.log, the previous BASE_NAME.1.log to BASE_NAME.2.log,
 * and so on. Keeps `number_of_files` files including the current one, clamped to 1..200000. Does
 * nothing if `max_bytes` is below 1. Applies to an open file at once, and replaces rotation by
 * date. */
LUMETRIX_API void lumetrix_set_rotation(lumetrix_logger* logger, int max_bytes,
                                        int number_of_files);

/* Selects rotation by date, the default: the first line after midnight, local time, starts a new
 * file. Keeps `number_of_files` files including the current one and removes older ones, including
 * those of earlier runs. Keeps all files if `number_of_files` is below 1, the default. Applies to
 * an open file at once, and replaces rotation by size. */
LUMETRIX_API void lumetrix_set_rotation_with_date(lumetrix_logger* logger, int number_of_files);

/* Blocks until all lines logged before the call have been passed to the operating system. Not
 * needed in normal use: lines are written as soon as the queue is empty. */
LUMETRIX_API void lumetrix_sync(lumetrix_logger* logger);

/* Like lumetrix_sync, but also writes the held lines to standard error if no output directory is
 * set. */
LUMETRIX_API void lumetrix_output_all_logs(lumetrix_logger* logger);

#ifdef __cplusplus
}
#endif

#endif
