// The attribute store against maps and vectors of the standard library: any operations on two stores and the
// copies between them. An allocation that fails leaves a store as it was.
#include <map>
#include <memory>

#include "AudioCodec/attributes/CAttributeContainerV2.h"
#include "fuzz/ScriptBytes.h"
#include "tests/support/CountedObject.h"

namespace {

using Store = CAttributeContainerV2;
using Bytes = std::optional<std::string>;  // nothing: a text that was given as null

template <class T>
const T* As(const char* bytes) {
    return reinterpret_cast<const T*>(bytes);
}
template <auto Get>
Bytes Number(Store& store, uint32_t id) {
    const auto value = (store.*Get)(id);
    return std::string(As<char>(reinterpret_cast<const char*>(&value)), sizeof value);
}
template <class T, Result (Store::*Get)(uint32_t, T**, uint32_t*)>
Bytes Array(Store& store, uint32_t id) {
    T* values = nullptr;
    uint32_t count = 0;
    Check((store.*Get)(id, &values, &count) == RESULT_OK, "a getter of the type succeeds");
    std::string bytes(reinterpret_cast<const char*>(values), count * sizeof(T));
    store.Free(values);
    return bytes;
}
Bytes Text(Store& store, uint32_t id) {
    char16_t* text = nullptr;
    if (store.GetString(id, &text) == RESULT_BAD_ARGUMENT) return std::nullopt;
    std::string bytes(reinterpret_cast<const char*>(text), std::char_traits<char16_t>::length(text) * 2);
    store.Free(text);
    return bytes;
}
Bytes Pointer(Store& store, uint32_t id) {
    void* value = nullptr;
    Check(store.GetPointer(id, &value) == RESULT_OK, "a getter of the type succeeds");
    return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

struct Kind {
    uint32_t size;  // of a number, an element or a unit
    bool isNumber;
    Result (*set)(Store& store, uint32_t id, const char* bytes, uint32_t count);
    Bytes (*get)(Store& store, uint32_t id);
};
// clang-format off
#define SET [](Store& s, uint32_t id, [[maybe_unused]] const char* b, [[maybe_unused]] uint32_t n)
constexpr Kind kKinds[] = {  // at their store types
    {},
    {4, true,  SET { return s.SetLong(id, *As<uint32_t>(b)); },            Number<&Store::GetLong>},
    {1, true,  SET { return s.SetBool(id, *As<uint8_t>(b)); },             Number<&Store::GetBool>},
    {4, false, SET { return s.SetLongArray(id, As<uint32_t>(b), n); },     Array<uint32_t, &Store::GetLongArray>},
    {2, false, SET { return s.SetString(id, As<char16_t>(b)); },           Text},
    {1, false, SET { return s.SetData(id, As<uint8_t>(b), n); },           Array<uint8_t, &Store::GetData>},
    {8, true,  SET { return s.SetLong64(id, *As<uint64_t>(b)); },          Number<&Store::GetLong64>},
    {8, false, SET { return s.SetLong64Array(id, As<uint64_t>(b), n); },   Array<uint64_t, &Store::GetLong64Array>},
    {8, true,  SET { return s.SetPointer(id, *As<void*>(b)); },            Pointer},
    {8, false, SET { return s.SetPointerArray(id, As<void*>(b), n); },     Array<void*, &Store::GetPointerArray>},
};
#undef SET
// clang-format on
constexpr uint32_t kCopied[] = {STORE_BOOL, STORE_DATA, STORE_LONG, STORE_LONG_ARRAY,
                                STORE_STRING};  // by nibble

constexpr GUID kIids[] = {MakeGuid("0A0B0C0D-0001-0002-0304-050607080901"),
                          MakeGuid("0A0B0C0D-0001-0002-0304-050607080902")};
constexpr uint32_t kObjects = 3;

struct Value {
    uint32_t type = 0;
    Bytes bytes;
    uint32_t changes = 0;
};
struct Holder {
    const GUID* iid;
    uint32_t object;
    bool counts;
};

// A store with what it has to hold.
class Twin {
public:
    explicit Twin(CountedObject* objects) : m_objects(objects) {}

    // `failing`: the script of an allocation that may fail.
    void Set(ScriptBytes& script, ScriptBytes& failing) {
        const uint32_t id = NextId(script);
        const uint32_t type = 1 + script.Next() % 9;
        const Kind& kind = kKinds[type];
        // Now and then near the size from which a block lies on a page.
        const uint32_t length = script.Next();
        const uint32_t count = kind.isNumber  ? 1
                               : length < 250 ? length % 40
                                              : 61440 / kind.size + length - 253;
        std::string bytes = script.Text(size_t{kind.size} * std::min(count, 40U));
        bytes.resize(size_t{kind.size} * count);
        if (type == STORE_BOOL) bytes[0] = static_cast<char>(bytes[0] & 1);
        for (size_t i = 0; type == STORE_STRING && i < bytes.size(); i += 2) bytes[i] |= 1;
        const Bytes given = type == STORE_STRING && length == 0 ? Bytes() : bytes;
        Result result = RESULT_OK;
        bool failed = false;
        {
            bytes.append(2, '\0');
            const FailureByScript failure(failing);
            result = kind.set(*m_store, id, given ? bytes.data() : nullptr, count);
            failed = failure.HasFailed();
        }
        if (failed && result == RESULT_NO_MEMORY) return;
        Value* const old = Find(id);
        const bool fits = !old || old->type == type;
        Check(result == (fits || kind.isNumber ? RESULT_OK : RESULT_FAILED), "a setter knows its type");
        if (fits) Keep(id, type, given);
        if (!fits && type == STORE_POINTER) ++old->changes;
    }

    void Copy(ScriptBytes& script, Twin& source) {
        const uint32_t id = NextId(script);
        const uint32_t nibble = TypeNibble(id) >> 24;
        uint32_t due = 0;
        if (nibble < std::size(kCopied)) {
            const uint32_t type = kCopied[nibble];
            const Value* const there = source.Find(id);
            Bytes bytes = std::string(kKinds[type].isNumber ? kKinds[type].size : 0, '\0');
            if (type == STORE_STRING) bytes.reset();
            if (there && there->type == type) bytes = there->bytes;
            if (bytes && type != STORE_LONG_ARRAY) due = static_cast<uint32_t>(bytes->size());
            const bool copies = bytes && (type != STORE_DATA || due != 0);
            if (copies && (!Find(id) || Find(id)->type == type)) Keep(id, type, bytes);
        }
        Check(m_store->CopyAttribute(id, source.m_store.get()) == due, "a copy tells what there was");
    }

    void CopyAllTo(Twin& target) {
        const bool isFree = target.m_values.empty() && target.m_holders.empty();
        const Result due = isFree ? RESULT_OK : RESULT_BAD_ARGUMENT;
        Check(m_store->CopyTo(target.m_store.get()) == due, "an empty store takes a copy");
        if (!isFree) return;
        target.m_values = m_values;
        for (auto& [id, value] : target.m_values) value.changes = 1;
        target.m_holders = m_holders;
    }

    void Hang(ScriptBytes& script) {
        const Holder holder{&kIids[script.Next() % 2], script.Next() % kObjects, script.Next() % 2 == 1};
        const bool isRefused = holder.counts && !(*holder.iid == kIids[holder.object % 2]);
        const Result result = m_store->AddInterface(holder.iid, &m_objects[holder.object], holder.counts);
        Check(result == (isRefused ? E_NOINTERFACE : RESULT_OK), "an object hangs unless it refuses");
        if (!isRefused) m_holders.push_back(holder);
    }

    void TakeDown(ScriptBytes& script) {
        const GUID* const iid = &kIids[script.Next() % 2];
        const uint32_t object = script.Next() % (kObjects + 1);
        size_t left = object == kObjects ? m_holders.size() : 1;
        const size_t gone = std::erase_if(m_holders, [&](const Holder& holder) {
            return holder.iid == iid && (object == kObjects || holder.object == object) && left != 0 &&
                   left-- != 0;
        });
        const Result result =
            m_store->RemoveInterface(iid, object == kObjects ? nullptr : &m_objects[object]);
        Check(result == (gone != 0 ? RESULT_OK : RESULT_NOT_FOUND), "what hangs there is taken down");
    }

    void Empty(bool anew) {
        m_values.clear();
        m_holders.clear();
        m_store->Clear();
        if (anew) m_store = std::make_unique<Store>();
    }

    void Compare() {
        Check(m_store->GetAttributeCount() == m_values.size(), "there are as many attributes");
        uint32_t index = 0;
        for (const auto& [id, value] : m_values) {
            uint32_t found = 0;
            uint32_t type = 0;
            Check(m_store->GetAttributeByIndex(index++, &found, &type) == RESULT_OK && found == id &&
                      type == value.type,
                  "attributes come in the order of their ids");
            Check(kKinds[type].get(*m_store, id) == value.bytes, "an attribute is what was set");
            Check(m_store->GetChangeCount(id) == value.changes, "stores are counted");
        }
        Check(m_store->GetInterfaceCount() == m_holders.size(), "there are as many objects");
        for (const GUID& iid : kIids) {
            uint32_t place = 0;
            for (const Holder& holder : m_holders) {
                if (holder.iid != &iid) continue;
                void* object = nullptr;
                m_store->GetInterface(&iid, place++, &object);
                Check(object == &m_objects[holder.object], "objects hang in the order of addition");
                m_objects[holder.object].Release();
            }
            Check(m_store->GetInterfaceCountById(&iid) == place, "objects are counted by their identifiers");
        }
    }

    uint32_t ReferencesOn(uint32_t object) const {
        const auto counts = [&](const Holder& holder) { return holder.counts && holder.object == object; };
        return static_cast<uint32_t>(std::count_if(m_holders.begin(), m_holders.end(), counts));
    }

private:
    // Few of each nibble, so that they meet.
    static uint32_t NextId(ScriptBytes& script) {
        const uint32_t byte = script.Next();
        return (byte & 0xF) << 24 | (byte >> 4) % 3 | (byte & 0x80) << 24;
    }
    Value* Find(uint32_t id) {
        const auto found = m_values.find(id);
        return found == m_values.end() ? nullptr : &found->second;
    }
    void Keep(uint32_t id, uint32_t type, const Bytes& bytes) {
        Value& value = m_values[id];
        value = {type, bytes, value.changes + 1};
    }

    CountedObject* m_objects;
    std::unique_ptr<Store> m_store = std::make_unique<Store>();
    std::map<uint32_t, Value> m_values;
    std::vector<Holder> m_holders;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    ScriptBytes script(data, size);
    ScriptBytes failing = script.Part(16);
    CountedObject objects[kObjects] = {CountedObject(kIids[0]), CountedObject(kIids[1]),
                                       CountedObject(kIids[0])};
    {
        Twin twins[2] = {Twin(objects), Twin(objects)};
        while (!script.IsOver()) {
            const uint32_t step = script.Next();
            Twin& twin = twins[step % 2];
            Twin& other = twins[1 - step % 2];
            const uint32_t kind = step / 2 % 16;
            if (kind < 7) twin.Set(script, failing);
            if (kind >= 7 && kind < 10) twin.Copy(script, step & 64 ? twin : other);
            if (kind == 10) twin.CopyAllTo(other);
            if (kind == 11 || kind == 12) twin.Hang(script);
            if (kind == 13) twin.TakeDown(script);
            if (kind == 14) twin.Compare();
            if (kind == 15) twin.Empty(step & 64);
        }
        for (Twin& twin : twins) twin.Compare();
        for (uint32_t i = 0; i < kObjects; ++i)
            Check(objects[i].Count() == 1 + twins[0].ReferencesOn(i) + twins[1].ReferencesOn(i),
                  "each holder has its reference");
    }
    for (const CountedObject& object : objects)
        Check(object.Count() == 1, "a store's end drops what hangs on it");
    return 0;
}
