// Objects that have a name in the process, for all of its modules: mutexes, events, semaphores and mappings
// of files share one table of names, that of the layer's first copy (FirstCopysFunction.h). A name lasts as
// long as handles to its object; case counts. Any thread.
//
// Decisions: another handle to an object is the same value once more, and each is closed for itself.
#pragma once

#include <functional>
#include <string>

#include "platform/base/HandleObject.h"

// What may have a name.
class NamedObject : public HandleObject {
public:
    void Close() override;

protected:
    using HandleObject::HandleObject;

private:
    friend class NamedObjects;
    std::string m_name;    // empty for none
    size_t m_handles = 1;  // under the table's lock
};

class NamedObjects {
public:
    // A handle to the object called `name` if it is of the class whose kKind is `kind`, with
    // ERROR_ALREADY_EXISTS; null with ERROR_INVALID_HANDLE if it isn't. Where there is none, what `make`
    // returns, with ERROR_SUCCESS; it may return null with a last error of its own. Without a name always
    // what `make` returns.
    static HANDLE CreateOrOpen(const char* name, uint32_t kind, const std::function<NamedObject*()>& make);
    // The same, but null with ERROR_FILE_NOT_FOUND where there is none.
    static HANDLE Open(const char* name, uint32_t kind);

private:
    friend class NamedObject;
    struct Table;
    static Table& Instance();
    // Takes one handle away: whether it was the last, and the name is free.
    static bool GiveUp(NamedObject& object);
};
