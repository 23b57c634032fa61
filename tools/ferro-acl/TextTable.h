// Aligned text columns that fit a terminal width: a cell is a list of items
// (words, or match terms), a column that does not fit is narrowed, and its
// cells wrap between items onto continuation lines, an item wider than the
// column being split. Other columns stay blank on continuation lines, so
// nothing is ever misaligned.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace FerroAcl {

struct TextColumn {
   bool rightAligned = false;
   size_t minimumWidth = 0;  // 0: never narrowed
};

using TextCell = std::vector<std::string>;  // items, joined with a blank
using TextRow = std::vector<TextCell>;

class TextTable {
 public:
   TextTable( std::vector<TextColumn> columns, size_t width, size_t indent )
       : columns_( std::move( columns ) ), width_( width ), indent_( indent ) {}

   // A row of cells, one per column.
   void addRow( TextRow row ) { rows_.push_back( std::move( row ) ); }
   // A line printed as it is between rows (a heading).
   void addLine( std::string line ) { rows_.push_back( { { std::move( line ) } } ); }

   void print( std::ostream& out ) const;

 private:
   std::vector<size_t> widths() const;

   std::vector<TextColumn> columns_;
   size_t width_;
   size_t indent_;
   std::vector<TextRow> rows_;  // a heading is a row of one cell of one item
};

// Items that join into "a, b, c" when they stay on one line.
TextCell listCell( const std::vector<std::string>& items, const char* separator );
// One word per item, so that a long name wraps between its words; "-" when
// there is no word.
TextCell wordCell( const std::string& text );

}  // namespace FerroAcl
