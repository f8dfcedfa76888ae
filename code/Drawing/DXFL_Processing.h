// DXFL_Processing: the tolerant DXF reader, and the extents of what it read.
// The caller owns the entities and computes their normals.
#pragma once

#include "DraftEntity.h"
#include "GroupCodes.h"

#include <list>
#include <string>

/// The constant iterator of an entity list, the entities of a drawing in file order.
using Draft_Entity_iterator = std::list<DraftEntity*>::const_iterator;

/// Reads the POINT, LINE and 3DFACE entities of the ENTITIES section of a DXF file in its text form (group codes 0,
/// 2, 5, 8 and 10 to 33 of the DXF reference). The file is read line by line, not as strict pairs: a line is a value
/// if the line before it denotes a group code. Numbers are read in the C locale.
class DXFL_Processing
{
public:
    /// Reads the file at the path `file_name` and appends its entities to `drentity_lst`; the caller owns them.
    /// If the status is not 0, the list is unchanged.
    DXFL_Processing(std::string file_name, std::list<DraftEntity*>& drentity_lst);
    ~DXFL_Processing() = default;

    /// 0: the file was read. -1: stat() failed. 1: it is a directory (or a socket or block device, which share
    /// the directory's mode bit). 2: it cannot be opened for reading. A FIFO or character device that is at end of file
    /// counts as an empty file; any other gets 2, because reading it might never end.
    int get_file_status() const { return file_status; }

    /// The extents of `drentity_lst` in model coordinates: its smallest and its largest x, y and z, and the largest
    /// absolute value among all coordinates. Returns false and sets nothing if the list is empty. NaNs are ignored: the
    /// extents of an axis are NaN only if all its coordinates are, and the limit only if all coordinates are.
    bool get_boundary(std::list<DraftEntity*>& drentity_lst, DRVect3d& min_pnt, DRVect3d& max_pnt,
                      double& dlimit) const;

    /// A GroupCodes that applies the reader's own test.
    static GroupCodes group_codes() { return GroupCodes(&DXFL_Processing::is_tag_string); }

private:
    int file_status = 0;

    static bool is_tag_string(std::string presence_str, std::string model_str);
    bool read_file(std::string file_name, std::list<DraftEntity*>& drentity_lst);
};
