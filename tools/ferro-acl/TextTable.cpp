#include "tools/ferro-acl/TextTable.h"

#include <algorithm>
#include <numeric>

namespace FerroAcl {

namespace {

size_t cellWidth( const TextCell& cell ) {
   size_t width = 0;
   for ( const std::string& item : cell ) {
      width += ( width ? 1 : 0 ) + item.size();
   }
   return width;
}

std::vector<std::string> wrap( const TextCell& cell, size_t width ) {
   std::vector<std::string> lines( 1 );
   for ( std::string item : cell ) {
      std::string& line = lines.back();
      if ( !line.empty() && line.size() + 1 + item.size() <= width ) {
         line += " " + item;
         continue;
      }
      if ( !line.empty() ) {
         lines.emplace_back();
      }
      while ( item.size() > width ) {
         lines.back() = item.substr( 0, width );
         item.erase( 0, width );
         lines.emplace_back();
      }
      lines.back() = item;
   }
   return lines;
}

}  // namespace

TextCell listCell( const std::vector<std::string>& items, const char* separator ) {
   TextCell cell;
   for ( size_t i = 0; i < items.size(); ++i ) {
      cell.push_back( items[i] + ( i + 1 < items.size() ? separator : "" ) );
   }
   return cell;
}

TextCell wordCell( const std::string& text ) {
   TextCell cell;
   for ( size_t start = 0; start < text.size(); ) {
      const size_t end = std::min( text.find( ' ', start ), text.size() );
      if ( end > start ) {
         cell.push_back( text.substr( start, end - start ) );
      }
      start = end + 1;
   }
   return cell.empty() ? TextCell{ "-" } : cell;
}

std::vector<size_t> TextTable::widths() const {
   std::vector<size_t> widths( columns_.size(), 0 );
   for ( const TextRow& row : rows_ ) {
      for ( size_t c = 0; row.size() == columns_.size() && c < row.size(); ++c ) {
         widths[c] = std::max( widths[c], cellWidth( row[c] ) );
      }
   }
   // Narrow the column with the most room above its minimum, one at a time.
   auto total = [&] {
      return indent_ + std::accumulate( widths.begin(), widths.end(), size_t( 0 ) ) +
             2 * ( widths.size() - 1 );
   };
   while ( total() > width_ ) {
      size_t widest = columns_.size();
      size_t room = 0;
      for ( size_t c = 0; c < columns_.size(); ++c ) {
         const size_t minimum = columns_[c].minimumWidth;
         if ( minimum != 0 && widths[c] > minimum && widths[c] - minimum > room ) {
            widest = c;
            room = widths[c] - minimum;
         }
      }
      if ( widest == columns_.size() ) {
         break;  // every column is at its minimum
      }
      --widths[widest];
   }
   return widths;
}

void TextTable::print( std::ostream& out ) const {
   const std::vector<size_t> width = widths();
   for ( const TextRow& row : rows_ ) {
      if ( row.size() != columns_.size() ) {
         out << row[0][0] << '\n';
         continue;
      }
      std::vector<std::vector<std::string>> cells;
      size_t height = 0;
      for ( size_t c = 0; c < row.size(); ++c ) {
         cells.push_back( wrap( row[c], width[c] ) );
         height = std::max( height, cells.back().size() );
      }
      for ( size_t l = 0; l < height; ++l ) {
         std::string line( indent_, ' ' );
         for ( size_t c = 0; c < row.size(); ++c ) {
            const std::string text = l < cells[c].size() ? cells[c][l] : "";
            const std::string pad( width[c] - text.size(), ' ' );
            line += ( c ? "  " : "" ) + ( columns_[c].rightAligned ? pad + text : text + pad );
         }
         line.erase( line.find_last_not_of( ' ' ) + 1 );
         out << line << '\n';
      }
   }
}

}  // namespace FerroAcl
