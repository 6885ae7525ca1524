// Nothing is inline here: the system's number of the thread is read in sys_os_windows.cpp, so that callers need not
// include windows.h.
