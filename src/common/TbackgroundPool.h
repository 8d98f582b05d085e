#pragma once

class QThreadPool;
class QString;

// A thread pool of the process for one kind of background work, made on first use as a child
// of the application (deleted with it). Its idle threads are kept: handing work to a thread
// that is just expiring makes the caller (the GUI thread) wait for that thread's exit. The
// same name always gives the same pool; maxThreads counts only when it is made. GUI thread.
QThreadPool* TbackgroundPool(const QString& name, int maxThreads);
