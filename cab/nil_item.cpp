#include "cab/nil_item.h"

namespace AUX::CAB {

namespace {

class Nil final : public DataItem {
public:
    [[nodiscard]] DataItem* Cast(Kind) noexcept override { return nullptr; }
    [[nodiscard]] bool SetRoot(DataRoot*, bool) noexcept override { return false; }
    [[nodiscard]] bool Assign(DataItem*, bool, bool) noexcept override { return false; }
    [[nodiscard]] bool IsType(Kind) noexcept override { return false; }
    [[nodiscard]] bool SetSpecHandle(std::unique_ptr<TemplateHandle>) noexcept override {
        return false;
    }
    [[nodiscard]] bool SetSpec(const ItemSpec*) noexcept override { return false; }
    [[nodiscard]] bool Reset() noexcept override { return false; }
    void SetFlags(std::uint32_t, std::uint32_t) noexcept override {}
};

}  // namespace

DataItem& NilItem() noexcept {
    static Nil nil;
    return nil;
}

}  // namespace AUX::CAB
