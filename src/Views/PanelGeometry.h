#pragma once

namespace orvanta {

// Of the panel and of the setup, in points, which are pixels independent of the device.
inline constexpr int panelWidth = 320;
inline constexpr int panelHeight = 352;
inline constexpr int rowHeight = 44; ///< of every band and row
inline constexpr int contentHeight = 220;
inline constexpr int nameWidth = 232;  ///< of the cell with a row's name
inline constexpr int cellPadding = 16; ///< at both sides of a cell's texts
inline constexpr int smallestGap = 8;  ///< between the texts at a cell's two sides

} // namespace orvanta
