// Life, sharing and access of the indexed mesh.

#include "vekdll/indexed_mesh/c_triangulation.h"

#include <algorithm>
#include <utility>

#include "vekdll/indexed_mesh/c_triangulation_data.h"
#include "vekdll/platform/framework_exceptions.h"

namespace {

// Cuts a block to `count` elements; a shorter one cannot be made whole.
template <class T>
SMemoryBlock<T> CutTo(SMemoryBlock<T> block, std::size_t count)
{
    if (block.size() < count) AfxThrowInvalidArgException();
    block.Truncate(count);
    return block;
}

// An optional block: empty for none, else cut to `count`.
template <class T>
SMemoryBlock<T> OptionalCutTo(SMemoryBlock<T> block, std::size_t count)
{
    return block.empty() ? std::move(block) : CutTo(std::move(block), count);
}

// One block of a mesh's data, or nothing for an empty mesh.
template <class T>
std::span<const T> View(const Geometry::CTriangulation::Data* data, SMemoryBlock<T> Geometry::CTriangulation::Data::*block)
{
    if (data == nullptr) return {};
    const SMemoryBlock<T>& b = data->*block;
    return {b.data(), b.size()};
}

} // namespace

namespace Geometry {

CTriangulation::CTriangulation() = default;

CTriangulation::CTriangulation(unsigned int numVertices, unsigned int numTriangles, SMemoryBlock<QbVector3f> positions,
                               SMemoryBlock<Triangle> triangles, SMemoryBlock<unsigned int> attributes,
                               SMemoryBlock<QbVector3f> normals)
    : data_(std::make_shared<Data>(Data{CutTo(std::move(positions), numVertices), CutTo(std::move(triangles), numTriangles),
                                        OptionalCutTo(std::move(attributes), numTriangles),
                                        OptionalCutTo(std::move(normals), numVertices)}))
{
}

CTriangulation::CTriangulation(const CTriangulation& other) = default;
CTriangulation::CTriangulation(CTriangulation&& other) noexcept = default;
CTriangulation::~CTriangulation() = default;
CTriangulation& CTriangulation::operator=(const CTriangulation& other) = default;
CTriangulation& CTriangulation::operator=(CTriangulation&& other) noexcept = default;

int CTriangulation::getReferenceCounter() const
{
    return data_ ? static_cast<int>(data_.use_count()) : 1;
}

CTriangulation::Data& CTriangulation::Own()
{
    if (!data_) {
        data_ = std::make_shared<Data>();
    } else if (data_.use_count() > 1) {
        data_ = std::make_shared<Data>(*data_);
    }
    return *data_;
}

unsigned int CTriangulation::GetNumVertices() const
{
    return static_cast<unsigned int>(GetPositions().size());
}

unsigned int CTriangulation::GetNumTriangles() const
{
    return static_cast<unsigned int>(GetTriangles().size());
}

std::span<const QbVector3f> CTriangulation::GetPositions() const
{
    return View(data_.get(), &Data::positions);
}

std::span<const CTriangulation::Triangle> CTriangulation::GetTriangles() const
{
    return View(data_.get(), &Data::triangles);
}

std::span<const QbVector3f> CTriangulation::GetNormals() const
{
    return View(data_.get(), &Data::normals);
}

std::span<const unsigned int> CTriangulation::GetAttributes() const
{
    return View(data_.get(), &Data::attributes);
}

bool CTriangulation::HasValidIndices() const
{
    const unsigned int n = GetNumVertices();
    return std::ranges::all_of(GetTriangles(), [n](const Triangle& t) { return t[0] < n && t[1] < n && t[2] < n; });
}

void CTriangulation::SetNormals(SMemoryBlock<QbVector3f> normals)
{
    const unsigned int n = GetNumVertices();
    Own().normals = OptionalCutTo(std::move(normals), n);
}

} // namespace Geometry
