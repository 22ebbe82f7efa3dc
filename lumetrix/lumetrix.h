/* The logging library of the gateway: one logger in a process, whose lines a thread of the
 * library writes to daily files.
 *
 *   lumetrix_logger* logger = lumetrix_get_logger();
 *   lumetrix_set_rotation_with_date(logger, 8);
 *   lumetrix_set_pool_size(logger, 1000);
 *   lumetrix_set_output_level(logger, LUMETRIX_INFO);
 *   lumetrix_set_output_dir(logger, "/var/log/gateway", "Gateway");
 *   lumetrix_log(logger, "GW", LUMETRIX_INFO, "started");
 *   lumetrix_release(logger);
 *
 * A line, its fields parted by tabs:
 *
 *   _dt:20240229T235959.123+01:00  _l:info  _th:4711  _m:Quorin5  msg:started
 *
 * that is local time with milliseconds and offset from UTC, level, number of the calling thread,
 * module, message. In a message a line feed is written as \n, a carriage return as \r, a tab as
 * \t, a back-slash as \\ and any other control character as \x and two hexadecimal digits, so a
 * message is always one field of one line.
 *
 * Everything here holds for all functions unless they say otherwise:
 *  - Strings are NUL-terminated UTF-8 and are copied before the call returns.
 *  - Every function may be called by any thread at any time.
 *  - A null handle, any pointer that lumetrix_get_logger did not return, a null string, and a
 *    logger that was released make the call do nothing.
 *  - No call fails. A log that cannot be written (the directory, the disk) is told in one line on
 *    standard error; lines are then lost until the file can be written again, which is tried every
 *    10 seconds, and the log says where they are missing.
 *  - The writing thread does not outlive fork: a child process has no log.
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

/* Level numbers. A number below LUMETRIX_DEBUG counts as LUMETRIX_DEBUG, one above LUMETRIX_ERROR
 * as LUMETRIX_ERROR, so errors cannot be switched off. In a line the four are called "debug",
 * "info", "warning" and "error". */
enum { LUMETRIX_DEBUG = 2, LUMETRIX_INFO = 3, LUMETRIX_WARN = 4, LUMETRIX_ERROR = 5 };

/* The logger of this process: the same handle at every call. The first call, and the first after
 * lumetrix_release, starts the logger with all settings at their defaults, its writing thread
 * included. Null when that thread cannot be started. The library stays in memory, however often it
 * is unloaded, until the logger is released. */
LUMETRIX_API lumetrix_logger* lumetrix_get_logger(void);

/* The same as lumetrix_get_logger: a process has one logger. */
LUMETRIX_API lumetrix_logger* lumetrix_create(void);

/* Writes out every line logged so far, ends the writing thread and closes the file. When no output
 * directory was ever given, the lines held for it go to standard error. Calls that have entered
 * the library are waited for, later ones do nothing, until lumetrix_get_logger starts the logger
 * again. Afterwards the library can be unloaded. A process that ends without it may lose its last
 * lines. */
LUMETRIX_API void lumetrix_release(lumetrix_logger* logger);

/* Logs one message of any length. `name`, the caller's name, has no place in the line. Returns as
 * soon as the line is queued: at once, or when the queue is full (lumetrix_set_pool_size) once
 * there is room again; no line is dropped for want of room. A level below the output level costs
 * next to nothing. */
LUMETRIX_API void lumetrix_log(lumetrix_logger* logger, const char* name, int level,
                               const char* message);

/* Writes to DIRECTORY/BASE_NAME_YYYY-MM-DD.log from now on (names by size: lumetrix_set_rotation),
 * appending to what is there. A missing directory is made, with its parents. Lines logged before
 * are held, the last 1024 of them, and now written; the output level holds for them too. An empty
 * directory is the current one; an empty base name does nothing. */
LUMETRIX_API void lumetrix_set_output_dir(lumetrix_logger* logger, const char* directory,
                                          const char* base_name);

/* Lines below `level` are not logged. Until it is set, all are. */
LUMETRIX_API void lumetrix_set_output_level(lumetrix_logger* logger, int level);

/* Other than 0: every line also goes to standard output, its level in colour when that is a
 * terminal. 0, the default: no more. Standard output that takes no more text, a pipe that nobody
 * reads, holds up the log and, once the queue is full, its callers. */
LUMETRIX_API void lumetrix_set_enabled_console_out(lumetrix_logger* logger, int enabled);

/* How many lines may wait for the writing thread: 1 to 65536 (about 30 MB), more counts as 65536,
 * less as the default, 1024. What is queued at the call is written first. */
LUMETRIX_API void lumetrix_set_pool_size(lumetrix_logger* logger, int lines);

/* Rotation by size: the file is BASE_NAME.log, and before a line would make it larger than
 * `max_bytes` it becomes BASE_NAME.1.log, that one BASE_NAME.2.log, and so on; `number_of_files`
 * of them are kept, the one being written included. `max_bytes` below 1 does nothing;
 * `number_of_files` counts as 1 below, as 200000 above. The last call of this function and the
 * next one decides; an open file is changed at once. */
LUMETRIX_API void lumetrix_set_rotation(lumetrix_logger* logger, int max_bytes,
                                        int number_of_files);

/* Rotation by date, the default: a new file begins with the first line after midnight, local time.
 * `number_of_files` of them are kept, the one being written included, and older ones removed,
 * those of earlier runs too; below 1, the default, all are kept. */
LUMETRIX_API void lumetrix_set_rotation_with_date(lumetrix_logger* logger, int number_of_files);

/* Returns when every line logged before the call has been handed to the system. Lines get there by
 * themselves as soon as the queue runs dry. */
LUMETRIX_API void lumetrix_sync(lumetrix_logger* logger);

/* As lumetrix_sync, and the lines held for want of an output directory go to standard error now
 * rather than at lumetrix_release. */
LUMETRIX_API void lumetrix_output_all_logs(lumetrix_logger* logger);

#ifdef __cplusplus
}
#endif

#endif
