// Text drawn from counts has the counts' frequencies.
#include <map>

#include "Sampler.h"
#include "Support.h"

namespace
{
constexpr int DRAWN = 40'000;

template <typename Draw>
std::map<wchar_t, double> Frequencies(Draw draw)
{
    CRandom random(1);
    std::map<wchar_t, double> shares;
    for (int i = 0; i < DRAWN; ++i) shares[draw(random)] += 1.0 / DRAWN;
    return shares;
}

void ExpectShares(const std::map<wchar_t, double>& drawn, const std::map<wchar_t, double>& counted)
{
    EXPECT_EQ(drawn.size(), counted.size());
    for (const auto& [character, share] : counted)  // four standard deviations at most
        EXPECT_NEAR(drawn.contains(character) ? drawn.at(character) : 0, share, 0.01)
            << static_cast<char>(character);
}

TEST(Sampler, DrawsInProportionToTheCounts)
{
    Statistics counts;
    counts.AddLine(L"ab", 6);
    counts.AddLine(L"ac", 3);
    counts.AddLine(L"b", 1);
    const CSampler sampler(counts);  // a nine times, b seven, c three; line ends are never drawn alone
    ExpectShares(Frequencies([&](CRandom& r) { return sampler.Any(r); }),
                 {{L'a', 9 / 19.0}, {L'b', 7 / 19.0}, {L'c', 3 / 19.0}});
    ExpectShares(Frequencies([&](CRandom& r) { return sampler.After(L'a', r); }),
                 {{L'b', 6 / 9.0}, {L'c', 3 / 9.0}});
    ExpectShares(Frequencies([&](CRandom& r) { return sampler.After(L'\n', r); }),
                 {{L'a', 9 / 10.0}, {L'b', 1 / 10.0}});

    counts.Prune(4);  // behind a, what was c is any character now
    const CSampler pruned(counts);
    ExpectShares(Frequencies([&](CRandom& r) { return pruned.After(L'a', r); }),
                 {{L'a', 3 / 9.0 * 9 / 19}, {L'b', 6 / 9.0 + 3 / 9.0 * 7 / 19}, {L'c', 3 / 9.0 * 3 / 19}});

    CRandom random(1);
    EXPECT_EQ(sampler.Text(50, 50, random, true).find(L'\n'), std::wstring::npos);
    const std::wstring text = sampler.Text(50, 50, random);
    EXPECT_EQ(text.size(), 50U);
    EXPECT_NE(text.find(L'\n'), std::wstring::npos);
}
}  // namespace
