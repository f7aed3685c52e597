#pragma once

#include "automation/page_range.h"
#include "objects/frame.h"

namespace AUX {

/// What an object of page ranges answers to code of this module.
struct IPageRangeContent : IUnknown {
    [[nodiscard]] virtual PageRange& Range() noexcept = 0;
};

}  // namespace AUX

QVD_INTERFACE_ID(AUX::IPageRangeContent, 0x6B4D2F20, 0x93C7, 0x4E18,
                 {0xA5, 0xD1, 0x0F, 0x7C, 0x3B, 0x92, 0x6E, 0x48});

namespace AUX {

/// A page range. What its operations do is told at PageRange.
class PageRangeObject final : public DualObject<IPageRange, IPageRangeContent> {
public:
    [[nodiscard]] PageRange& Range() noexcept override { return range_; }

    HRESULT STDMETHODCALLTYPE Reset() noexcept override;
    /// \return S_FALSE if the text is null or gives no entry.
    HRESULT STDMETHODCALLTYPE SetText(BSTR text) noexcept override;
    HRESULT STDMETHODCALLTYPE GetText(BSTR* text) noexcept override;
    HRESULT STDMETHODCALLTYPE SetSpan(LONG first, LONG last) noexcept override;
    HRESULT STDMETHODCALLTYPE SetPages(IIntArray* pages) noexcept override;
    HRESULT STDMETHODCALLTYPE SetType(LONG type) noexcept override;
    HRESULT STDMETHODCALLTYPE SetFilter(LONG filter) noexcept override;
    HRESULT STDMETHODCALLTYPE SetReversed(VARIANT_BOOL isReversed) noexcept override;
    HRESULT STDMETHODCALLTYPE GetCount(LONG* count) noexcept override;
    HRESULT STDMETHODCALLTYPE IsEmpty(VARIANT_BOOL* isEmpty) noexcept override;
    /// \return S_FALSE, with -1, at the end.
    HRESULT STDMETHODCALLTYPE First(LONG* page) noexcept override;
    /// \param newRun  May be null. \return S_FALSE, with -1, at the end.
    HRESULT STDMETHODCALLTYPE Next(VARIANT_BOOL* newRun, VARIANT_BOOL restart,
                                   LONG* page) noexcept override;
    HRESULT STDMETHODCALLTYPE ToPageList(VARIANT_BOOL sorted, IIntArray** pages) noexcept override;
    /// \param count  May be null.
    HRESULT STDMETHODCALLTYPE ToPageSet(LONG* count, IBitSet** pages) noexcept override;
    HRESULT STDMETHODCALLTYPE Normalize(VARIANT_BOOL allowAll) noexcept override;
    /// \return E_INVALIDARG for null and for objects of other implementations.
    HRESULT STDMETHODCALLTYPE Assign(IPageRange* other) noexcept override;
    /// \param bag  An IBag, whose root item is read, or an IBagItem that is a dictionary; of this
    ///             library. \return S_FALSE if something was corrected; E_INVALIDARG for another.
    HRESULT STDMETHODCALLTYPE Load(IUnknown* bag, LONG pageCount, ULONG flags) noexcept override;
    /// \param bag  As for Load.
    HRESULT STDMETHODCALLTYPE Save(IUnknown* bag, LONG type) noexcept override;

    HRESULT STDMETHODCALLTYPE GetPageCount(LONG* count) noexcept override;
    HRESULT STDMETHODCALLTYPE SetPageCount(LONG count) noexcept override;
    HRESULT STDMETHODCALLTYPE GetType(LONG* type) noexcept override;
    HRESULT STDMETHODCALLTYPE GetFilter(LONG* filter) noexcept override;
    HRESULT STDMETHODCALLTYPE GetReversed(VARIANT_BOOL* isReversed) noexcept override;
    HRESULT STDMETHODCALLTYPE GetCurrentPage(LONG* page) noexcept override;
    HRESULT STDMETHODCALLTYPE SetCurrentPage(LONG page) noexcept override;
    HRESULT STDMETHODCALLTYPE GetCurrentRect(double* left, double* top, double* right,
                                             double* bottom) noexcept override;
    HRESULT STDMETHODCALLTYPE SetCurrentRect(double left, double top, double right,
                                             double bottom) noexcept override;
    HRESULT STDMETHODCALLTYPE GetCustomPage(LONG* page) noexcept override;
    HRESULT STDMETHODCALLTYPE SetCustomPage(LONG page) noexcept override;
    HRESULT STDMETHODCALLTYPE GetCustomRect(double* left, double* top, double* right,
                                            double* bottom) noexcept override;
    HRESULT STDMETHODCALLTYPE SetCustomRect(double left, double top, double right,
                                            double bottom) noexcept override;
    HRESULT STDMETHODCALLTYPE Clone(IPageRange** copy) noexcept override;

private:
    PageRange range_;
};

}  // namespace AUX
