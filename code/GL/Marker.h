// Marker: the base of objects that can be marked, as GLObjects are when selected.
#pragma once

/// The marks, used as a bit mask.
enum geommark { selected = 1 };

/// A base with a word of mark bits. Every mask is accepted.
class Marker
{
public:
    explicit Marker(int some_mark) : my_mark(static_cast<unsigned int>(some_mark)) {}
    virtual ~Marker() = default;
    Marker(const Marker&) = default;
    Marker& operator=(const Marker&) = default;

    virtual unsigned int mark() const { return my_mark; }
    virtual void clear_mark() { my_mark = 0; }

    virtual bool set_mark(unsigned int mask)
    {
        my_mark |= mask;
        return true;
    }

    virtual bool del_mark(unsigned int mask)
    {
        my_mark ^= my_mark & mask;
        return true;
    }

    /// Whether all bits of `mask` are set; true for the mask 0.
    virtual bool check_mark(unsigned int mask) const { return (my_mark & mask) == mask; }

    /// Whether at least one bit of `mask` is set.
    virtual bool check_any_mark(unsigned int mask) const { return (my_mark & mask) != 0; }

protected:
    unsigned int my_mark;
};
