#include "thr_sys.h"

#include "thr/os/thr_os.h"

THR_MUTEX_OBJ thr_mutex_create()
{
    return thr_os_mutex_create();
}

void thr_mutex_destroy(THR_MUTEX_OBJ mutex)
{
    if (mutex != nullptr)
        thr_os_mutex_destroy(mutex);
}

void thr_mutex_lock(THR_MUTEX_OBJ mutex)
{
    if (mutex != nullptr)
        thr_os_mutex_lock(mutex);
}

void thr_mutex_unlock(THR_MUTEX_OBJ mutex)
{
    if (mutex != nullptr)
        thr_os_mutex_unlock(mutex);
}

THR_SCOPED_MUTEX::THR_SCOPED_MUTEX(THR_MUTEX_OBJ &mutex) : m_mutex(mutex)
{
    thr_mutex_lock(m_mutex);
}

THR_SCOPED_MUTEX::~THR_SCOPED_MUTEX()
{
    thr_mutex_unlock(m_mutex);
}
