// A filter that reads a file: one output pin, a stream of bytes that others read at any place
// through IAsyncReader, on their own threads. Only reads that wait are offered: Request and its like
// return E_NOTIMPL. The file is open from Load until the filter goes, and others may read it and
// write to it meanwhile.
#pragma once

#include <string>

#include "platform/base/UniqueHandle.h"
#include "platform/media/PinBase.h"
#include "platform/media/TransportInterfaces.h"

class FileSource final : public FilterBase, public IFileSourceFilter {
public:
    FileSource() : FilterBase(CLSID_AsyncReader), m_output(*this) {}

    HRESULT QueryInterface(const GUID& iid, void** object) override;
    uint32_t AddRef() override { return FilterBase::AddRef(); }
    uint32_t Release() override { return FilterBase::Release(); }

    // Once. A failure is the file's: ERROR_FILE_NOT_FOUND comes as 0x80070002.
    HRESULT Load(const WCHAR* path, const AM_MEDIA_TYPE* type) override;
    HRESULT GetCurFile(WCHAR** path, AM_MEDIA_TYPE* type) override;

private:
    class Output final : public PinBase, public IAsyncReader {
    public:
        explicit Output(FileSource& source) : PinBase(source, PINDIR_OUTPUT, u"Output"), m_source(source) {}

        HRESULT QueryInterface(const GUID& iid, void** object) override;
        uint32_t AddRef() override { return PinBase::AddRef(); }
        uint32_t Release() override { return PinBase::Release(); }

        HRESULT RequestAllocator(IMemAllocator*, ALLOCATOR_PROPERTIES*, IMemAllocator**) override;
        HRESULT Request(IMediaSample*, DWORD_PTR) override { return E_NOTIMPL; }
        HRESULT WaitForNext(DWORD, IMediaSample**, DWORD_PTR*) override { return E_NOTIMPL; }
        HRESULT SyncReadAligned(IMediaSample* sample) override;
        HRESULT SyncRead(LONGLONG position, LONG length, BYTE* buffer) override;
        HRESULT Length(LONGLONG* total, LONGLONG* available) override;
        HRESULT BeginFlush() override { return S_OK; }  // of both faces: a read never waits for long
        HRESULT EndFlush() override { return S_OK; }

    private:
        std::vector<MediaType> OfferedTypes() override;
        HRESULT Connected(IPin&, const AM_MEDIA_TYPE&) override { return S_OK; }

        FileSource& m_source;
    };

    ~FileSource() override = default;
    std::vector<PinBase*> Pins() override { return {&m_output}; }
    HRESULT ReadAt(LONGLONG position, LONG length, BYTE* buffer, DWORD& done);

    Output m_output;
    std::mutex m_fileLock;  // one place for all readers
    UniqueHandle m_file;    // reads under m_fileLock
    LONGLONG m_size = 0;    // bytes, fixed at Load
    std::u16string m_path;
};
