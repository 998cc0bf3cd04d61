#include "vekdll/pixelchains/pixel_chain.h"

void CPixelChain::AddPixel(int x, int y)
{
    pixels_.push_back({x, y});
}

void CPixelChain::RemoveAll()
{
    pixels_.clear();
}

int CPixelChain::GetCount() const
{
    return static_cast<int>(pixels_.size());
}

void CPixelChain::GetPixel(int index, int& x, int& y) const
{
    if (index < 0 || index >= GetCount()) return;
    x = pixels_[static_cast<std::size_t>(index)].x;
    y = pixels_[static_cast<std::size_t>(index)].y;
}
