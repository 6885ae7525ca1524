// The part of the messages that only the rest of this library uses; the messages are in mem_sys.h.
#ifndef MEM_MSG_H
#define MEM_MSG_H

/// Takes the lock of the destination of messages, and releases it, around a fork.
void mem_msg_lock();
void mem_msg_unlock();

#endif
