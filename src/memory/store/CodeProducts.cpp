#include "memory/store/CodeProducts.h"

// This file is compiled once for each set of instructions: it includes itself.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "memory/store/CodeProducts.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace dorix::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

void products(const std::int8_t* HWY_RESTRICT codes, std::size_t rows, std::size_t stride,
              const std::int16_t* HWY_RESTRICT query, std::int32_t* HWY_RESTRICT out) {
    const hn::ScalableTag<std::int16_t> words;
    const hn::Rebind<std::int8_t, decltype(words)> bytes;
    const hn::RepartitionToWide<decltype(words)> sums;
    const std::size_t lanes = hn::Lanes(words);
    for (std::size_t row = 0; row < rows; ++row, codes += stride) {
        auto even = hn::Zero(sums);
        auto odd = hn::Zero(sums);
        for (std::size_t at = 0; at < stride; at += lanes) {
            const auto row16 = hn::PromoteTo(words, hn::Load(bytes, codes + at));
            even = hn::ReorderWidenMulAccumulate(sums, row16, hn::Load(words, query + at), even, odd);
        }
        out[row] = hn::GetLane(hn::SumOfLanes(sums, hn::Add(even, odd)));
    }
}

}  // namespace dorix::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace dorix {

HWY_EXPORT(products);

void codeProducts(const std::int8_t* codes, std::size_t rows, std::size_t stride, const std::int16_t* query,
                  std::int32_t* products) {
    HWY_DYNAMIC_DISPATCH(products)(codes, rows, stride, query, products);
}

}  // namespace dorix
#endif
