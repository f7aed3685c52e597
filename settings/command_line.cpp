#include <charconv>

#include "settings/conversion_settings.h"

namespace {

struct FlagSwitch {
    const WCHAR* text;
    bool ConversionSettings::*field;
};
struct NumberSwitch {
    const WCHAR* text;
    std::uint32_t ConversionSettings::*field;
};
struct LengthSwitch {
    const WCHAR* text;
    double ConversionSettings::*field;
};

// The converter takes the switches in this order and in no other.
constexpr FlagSwitch kFlags[] = {
    {TEXT("\\l "), &ConversionSettings::LandscapeOrientation},
    {TEXT("\\b "), &ConversionSettings::UseWebPageBackgroundColor},
    {TEXT("\\h "), &ConversionSettings::GenerateLinks},
    {TEXT("\\r "), &ConversionSettings::RunPDFApp},
    {TEXT("\\hi "), &ConversionSettings::HiddenRun},
};
constexpr NumberSwitch kNumbers[] = {
    {TEXT("\\iw "), &ConversionSettings::WebPageTargetWidth},
    {TEXT("\\ih "), &ConversionSettings::WebPageTargetHeight},
    {TEXT("\\ld "), &ConversionSettings::LoadDelay},
    {TEXT("\\is "), &ConversionSettings::PDFSpecification},
    {TEXT("\\ic "), &ConversionSettings::CompressionLevel},
};
constexpr LengthSwitch kLengths[] = {
    {TEXT("\\pw "), &ConversionSettings::PageWidth},
    {TEXT("\\ph "), &ConversionSettings::PageHeight},
    {TEXT("\\mt "), &ConversionSettings::MarginTop},
    {TEXT("\\mb "), &ConversionSettings::MarginBottom},
    {TEXT("\\ml "), &ConversionSettings::MarginLeft},
    {TEXT("\\mr "), &ConversionSettings::MarginRight},
};

/// Tenths of a point, cut towards zero, as the low 32 bits of a whole number; what is no number or
/// passes 64 bits gives 0.
std::uint32_t Tenths(double points) noexcept {
    constexpr double kLimit = 9223372036854775808.0;
    const double scaled = points * 10.0;
    if (!(scaled > -kLimit && scaled < kLimit)) return 0;
    return static_cast<std::uint32_t>(static_cast<std::int64_t>(scaled));
}

/// The arguments in the making; what memory does not suffice for is left out.
class LineWriter {
public:
    explicit LineWriter(AUX::WString& output) noexcept : output_(output) { output_.Clear(); }

    void Add(AUX::WStringView text) noexcept { (void)output_.Append(text); }

    void AddQuoted(AUX::WStringView text) noexcept {
        Add(TEXT("\""));
        Add(text);
        Add(TEXT("\" "));
    }

    /// The switch, the number read as a signed one, a blank.
    void AddNumber(const WCHAR* text, std::uint32_t number) noexcept {
        char digits[16];
        const auto end =
            std::to_chars(digits, digits + sizeof(digits) - 1, static_cast<std::int32_t>(number))
                .ptr;
        *end = ' ';
        WCHAR wide[16];
        const std::size_t count = static_cast<std::size_t>(end - digits) + 1;
        for (std::size_t i = 0; i < count; ++i) wide[i] = static_cast<WCHAR>(digits[i]);
        Add(text);
        Add({wide, count});
    }

    /// Not quoted, and nothing in it escaped: the converter takes it so.
    void AddValue(const WCHAR* text, const AUX::WString& value) noexcept {
        Add(text);
        Add(value);
        Add(TEXT(" "));
    }

private:
    AUX::WString& output_;
};

}  // namespace

void ConversionSettings::BuildCommandLine(AUX::WStringView firstText, AUX::WStringView secondText,
                                          AUX::WString& output) const noexcept {
    LineWriter line(output);
    line.AddQuoted(firstText);
    line.AddQuoted(secondText);
    for (const FlagSwitch& flag : kFlags) {
        if (this->*flag.field) line.Add(flag.text);
    }
    for (const NumberSwitch& number : kNumbers) line.AddNumber(number.text, this->*number.field);
    for (const LengthSwitch& length : kLengths) {
        line.AddNumber(length.text, Tenths(this->*length.field));
    }
    if (!StorageFile.IsEmpty()) {
        line.AddValue(TEXT("\\bp "), StorageFile);
    } else if (!SharedDataName.IsEmpty()) {
        line.AddValue(TEXT("\\sm "), SharedDataName);
    }
    if (!CeArgument.IsEmpty()) line.AddValue(TEXT("\\ce "), CeArgument);
}
