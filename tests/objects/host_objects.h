#pragma once

#include <functional>
#include <gtest/gtest.h>
#include <string>

#include "cab/com_stream.h"
#include "cab/data_dictionary.h"
#include "foundation/dyn_mem_stream.h"
#include "objects/frame.h"
#include "objects/operation_lists.h"

/// What a host brings to the family.
namespace objects_test {

using AUX::Give;
namespace CAB = AUX::CAB;

/// A COM stream of some bytes, at their start.
inline platform::ComPtr<IUnknown> StreamOf(std::string_view bytes) {
    std::unique_ptr<AUX::DynMemStream> stream(new (std::nothrow) AUX::DynMemStream);
    std::int64_t count = 0;
    EXPECT_EQ(stream->Open(0, 0), AUX::kStatusOk);
    EXPECT_EQ(stream->Write(bytes.data(), static_cast<std::int64_t>(bytes.size()), count),
              AUX::kStatusOk);
    (void)stream->Rewind();
    return platform::ComPtr<IUnknown>(CAB::MakeComStream(std::move(stream)).Get());
}

// A progress object that a test reads: what a host would show.
class Meter final : public AUX::DualObject<IProgress> {
public:
    HRESULT STDMETHODCALLTYPE GetPosition(double* p) noexcept override { return Give(p, position); }
    HRESULT STDMETHODCALLTYPE SetPosition(double p) noexcept override {
        position = p;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetRange(double* r) noexcept override { return Give(r, range); }
    HRESULT STDMETHODCALLTYPE SetRange(double r) noexcept override {
        range = r;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetState(ULONG* s) noexcept override { return Give(s, state); }
    HRESULT STDMETHODCALLTYPE SetState(ULONG value, ULONG mask) noexcept override {
        state = (state & ~mask) | (value & mask);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetTitle(BSTR) noexcept override { return Note('T'); }
    HRESULT STDMETHODCALLTYPE SetMessage(BSTR) noexcept override { return Note('M'); }
    HRESULT STDMETHODCALLTYPE SetDetail(BSTR) noexcept override { return Note('D'); }
    HRESULT STDMETHODCALLTYPE AddNote(BSTR) noexcept override { return Note('N'); }
    HRESULT STDMETHODCALLTYPE IsCanceled(VARIANT_BOOL* r) noexcept override {
        return Give(r, VARIANT_FALSE);
    }
    HRESULT STDMETHODCALLTYPE Cancel() noexcept override { return Note('C'); }
    HRESULT STDMETHODCALLTYPE Refresh() noexcept override { return Note('R'); }
    HRESULT Note(char call) {
        calls += call;
        return S_OK;
    }

    double position = 0, range = 100;
    ULONG state = 0;
    std::string calls;
};

// A step that writes what is done into a text.
class Step final : public AUX::DualObject<IHistoryStep> {
public:
    Step(std::string& log, char name, std::function<void()> act = {})
        : log_(log), name_(name), act_(std::move(act)) {}
    HRESULT STDMETHODCALLTYPE Undo(ULONG) noexcept override {
        if (act_) act_();
        log_ += '-', log_ += name_;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Redo(ULONG) noexcept override {
        log_ += '+', log_ += name_;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetSize(LONGLONG* bytes) noexcept override { return Give(bytes, 10); }
    HRESULT STDMETHODCALLTYPE GetText(ULONG which, BSTR* text) noexcept override {
        const WCHAR letter = static_cast<WCHAR>(TEXT('0') + which);
        return AUX::GiveText(text, &letter, 1);
    }

private:
    std::string& log_;
    const char name_;
    const std::function<void()> act_;
};

// An operation with a bag.
class Operation final : public platform::ComObject<AUX::IBagOwner> {
public:
    [[nodiscard]] CAB::DataRoot& Bag() noexcept override { return *bag_; }
    void Put(const WCHAR* key, CAB::Kind kind) {
        ASSERT_TRUE(bag_->GetRootItem()->AsDictionary()->GetOrAdd(key, -1, kind));
    }

private:
    ~Operation() override { bag_->Release(); }
    CAB::DataRoot* const bag_ = CAB::DataRoot::Create();
};

}  // namespace objects_test
