#pragma once

#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "vekdll/platform/framework_exceptions.h"
#include "vekdll/platform/framework_types.h"

// A doubly linked list whose nodes never move. Nodes come from blocks of
// `blockSize` nodes; a removed node goes onto a free chain and is handed out
// again by the next insertion, most recently freed first. When the list
// becomes empty all blocks are released. The triangle graphs of the library
// live in such lists and walk them while removing: a walk reads the next
// position before it touches the current element, so removing the element
// just returned by GetNext is safe.
//
// The list counts every change of its nodes (insertion, removal, SetAt), so
// that an index kept beside it can tell whether the list has changed behind
// its back.
template <class TYPE, class ARG_TYPE = const TYPE&>
class CList {
public:
    explicit CList(INT_PTR blockSize = 10) : blockSize_(blockSize > 0 ? blockSize : 10) {}
    ~CList() { RemoveAll(); }

    CList(const CList&) = delete;
    CList& operator=(const CList&) = delete;

    INT_PTR GetCount() const { return count_; }
    std::uint64_t GetChangeCount() const { return changes_; }
    INT_PTR GetSize() const { return count_; }
    bool IsEmpty() const { return count_ == 0; }

    TYPE& GetHead() { return head_->data; }
    const TYPE& GetHead() const { return head_->data; }
    TYPE& GetTail() { return tail_->data; }
    const TYPE& GetTail() const { return tail_->data; }

    POSITION GetHeadPosition() const { return ToPosition(head_); }
    POSITION GetTailPosition() const { return ToPosition(tail_); }

    // Returns the element at `pos` and moves `pos` to the following one
    // (null after the tail).
    TYPE& GetNext(POSITION& pos)
    {
        Node* node = ToNode(pos);
        pos = ToPosition(node->next);
        return node->data;
    }
    const TYPE& GetNext(POSITION& pos) const
    {
        Node* node = ToNode(pos);
        pos = ToPosition(node->next);
        return node->data;
    }
    TYPE& GetPrev(POSITION& pos)
    {
        Node* node = ToNode(pos);
        pos = ToPosition(node->prev);
        return node->data;
    }
    const TYPE& GetPrev(POSITION& pos) const
    {
        Node* node = ToNode(pos);
        pos = ToPosition(node->prev);
        return node->data;
    }
    TYPE& GetAt(POSITION pos) { return ToNode(pos)->data; }
    const TYPE& GetAt(POSITION pos) const { return ToNode(pos)->data; }
    void SetAt(POSITION pos, ARG_TYPE value)
    {
        ToNode(pos)->data = value;
        ++changes_;
    }

    POSITION AddHead(ARG_TYPE value) { return InsertBetween(nullptr, head_, value); }
    POSITION AddTail(ARG_TYPE value) { return InsertBetween(tail_, nullptr, value); }
    POSITION InsertBefore(POSITION pos, ARG_TYPE value)
    {
        if (pos == nullptr) return AddHead(value);
        Node* node = ToNode(pos);
        return InsertBetween(node->prev, node, value);
    }
    POSITION InsertAfter(POSITION pos, ARG_TYPE value)
    {
        if (pos == nullptr) return AddTail(value);
        Node* node = ToNode(pos);
        return InsertBetween(node, node->next, value);
    }

    // Appends copies of all elements of `other`, in its order.
    void AddTail(const CList* other)
    {
        for (Node* node = other->head_; node != nullptr; node = node->next) AddTail(node->data);
    }

    TYPE RemoveHead()
    {
        TYPE value = std::move(head_->data);
        RemoveAt(ToPosition(head_));
        return value;
    }
    TYPE RemoveTail()
    {
        TYPE value = std::move(tail_->data);
        RemoveAt(ToPosition(tail_));
        return value;
    }
    void RemoveAt(POSITION pos)
    {
        Node* node = ToNode(pos);
        (node->prev != nullptr ? node->prev->next : head_) = node->next;
        (node->next != nullptr ? node->next->prev : tail_) = node->prev;
        ++changes_;
        ReleaseNode(node);
    }
    // Destroys all elements and releases every block.
    void RemoveAll()
    {
        for (Node* node = head_; node != nullptr; node = node->next) std::destroy_at(&node->data);
        head_ = tail_ = freeChain_ = nullptr;
        count_ = 0;
        ++changes_;
        while (blocks_ != nullptr) {
            Block* next = blocks_->next;
            ::operator delete(static_cast<void*>(blocks_), std::align_val_t(alignof(Block)));
            blocks_ = next;
        }
    }

    // Exchanges the elements, and the nodes that hold them, with `other`:
    // positions stay valid and now belong to the other list. Both lists
    // count it as a change.
    void Swap(CList& other) noexcept
    {
        std::swap(head_, other.head_);
        std::swap(tail_, other.tail_);
        std::swap(freeChain_, other.freeChain_);
        std::swap(blocks_, other.blocks_);
        std::swap(count_, other.count_);
        std::swap(blockSize_, other.blockSize_);
        ++changes_;
        ++other.changes_;
    }

    // First position at or after `startAfter`'s successor whose element equals `value`.
    POSITION Find(ARG_TYPE value, POSITION startAfter = nullptr) const
    {
        Node* node = startAfter == nullptr ? head_ : ToNode(startAfter)->next;
        for (; node != nullptr; node = node->next) {
            if (node->data == value) return ToPosition(node);
        }
        return nullptr;
    }
    POSITION FindIndex(INT_PTR index) const
    {
        if (index < 0 || index >= count_) return nullptr;
        Node* node = head_;
        while (index-- > 0) node = node->next;
        return ToPosition(node);
    }

private:
    struct Node {
        Node* next;
        Node* prev;
        TYPE data;
    };
    // A block header followed by `blockSize_` raw node slots.
    struct alignas(alignof(Node) > alignof(void*) ? alignof(Node) : alignof(void*)) Block {
        Block* next;
    };

    static Node* ToNode(POSITION pos) { return reinterpret_cast<Node*>(pos); }
    static POSITION ToPosition(Node* node) { return reinterpret_cast<POSITION>(node); }

    static constexpr std::size_t SlotOffset()
    {
        return (sizeof(Block) + alignof(Node) - 1) / alignof(Node) * alignof(Node);
    }

    void AddBlock()
    {
        const std::size_t bytes = SlotOffset() + sizeof(Node) * static_cast<std::size_t>(blockSize_);
        void* raw = nullptr;
        try {
            raw = ::operator new(bytes, std::align_val_t(alignof(Block)));
        } catch (const std::bad_alloc&) {
            AfxThrowMemoryException();
        }
        Block* block = static_cast<Block*>(raw);
        block->next = blocks_;
        blocks_ = block;
        // Chain the slots so that the first slot of the block is handed out first.
        auto* slots = reinterpret_cast<Node*>(static_cast<char*>(raw) + SlotOffset());
        for (INT_PTR i = blockSize_ - 1; i >= 0; --i) {
            slots[i].next = freeChain_;
            freeChain_ = &slots[i];
        }
    }

    POSITION InsertBetween(Node* before, Node* after, ARG_TYPE value)
    {
        if (freeChain_ == nullptr) AddBlock();
        Node* node = freeChain_;
        freeChain_ = node->next;
        std::construct_at(&node->data, value);
        node->prev = before;
        node->next = after;
        (before != nullptr ? before->next : head_) = node;
        (after != nullptr ? after->prev : tail_) = node;
        ++count_;
        ++changes_;
        return ToPosition(node);
    }

    void ReleaseNode(Node* node)
    {
        std::destroy_at(&node->data);
        node->next = freeChain_;
        freeChain_ = node;
        if (--count_ == 0) RemoveAll();
    }

    Node* head_ = nullptr;
    Node* tail_ = nullptr;
    Node* freeChain_ = nullptr;
    Block* blocks_ = nullptr;
    INT_PTR count_ = 0;
    INT_PTR blockSize_;
    std::uint64_t changes_ = 0;
};

// The untyped list of pointers.
class CPtrList : public CList<void*, void*> {
public:
    using CList<void*, void*>::CList;
};

// A list of typed pointers. BASE_CLASS names the untyped list the framework
// would wrap; storing the pointers with their own type avoids the casts that
// the wrapper would need.
template <class BASE_CLASS, class TYPE>
class CTypedPtrList : public CList<TYPE, TYPE> {
    static_assert(std::is_pointer_v<TYPE>, "CTypedPtrList holds pointers");

public:
    using CList<TYPE, TYPE>::CList;
};
