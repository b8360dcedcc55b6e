// The menus inside of others.
//
// Threads  Constant data.
#pragma once

#include <map>
#include <span>

#include "docview/commands/command_ids.h"

inline constexpr unsigned kTimeColumnIds[] = {ID_VIEW_TIMEDELTA, ID_VIEW_TIMESINCE,
                                              ID_VIEW_TIMEWALL};
inline constexpr unsigned kMarkIds[] = {ID_EDIT_MARK1,     ID_EDIT_MARK1 + 1, ID_EDIT_MARK1 + 2,
                                        ID_EDIT_MARK1 + 3, ID_EDIT_MARK1 + 4, ID_EDIT_MARK1 + 5,
                                        ID_EDIT_MARK1 + 6, ID_EDIT_MARK1 + 7, ID_EDIT_MARK1 + 8};
inline constexpr unsigned kCopyIds[] = {ID_EDIT_COPYTEXT, ID_EDIT_COPYTABS,    ID_EDIT_COPYCSV,
                                        ID_EDIT_COPYJSON, ID_EDIT_COPYFILTER,  0,
                                        ID_EDIT_COPYROWS, ID_EDIT_COPYHEADINGS};
inline constexpr unsigned kProfileIds[] = {ID_VIEW_PROFILESTANDARD, ID_VIEW_PROFILESAVE,
                                           ID_VIEW_PROFILEMANAGE};
// By the id of their item.
inline const std::map<unsigned, std::span<const unsigned>> kSubmenus = {
    {ID_EDIT_COPYROWSAS, kCopyIds},
    {ID_EDIT_MARKCOLOUR, kMarkIds},
    {ID_VIEW_TIMECOLUMNS, kTimeColumnIds},
    {ID_VIEW_PROFILES, kProfileIds},
};
