// A filter text as the marks of the filter dialog's tree.
//
// Shape    Any text is taken that lets through the same traces as some tree of the dialog does,
//          however it is written. Where names may come this holds for their traces as well.
//          As the dialog writes marks: what it shows and OK would write lets the same through.
// Threads  Pure.
#pragma once

#include "tree/filter/text/filter_names.h"
#include "tree/filter/text/look_time.h"
#include "tree/filter/trace_filter.h"
#include "where/text/where_parser.h"

// Leaves shown in the filter what it showed and the text lets through. REQUIRES: the filter has all
// ids of the document (MergeDocumentNames). Its own text is not looked at.
// Errors   False, the place in the text and the reason; the filter is as it was. Once `time` is
//          over the reason is that it takes too long; null: it may take as long as it takes.
bool FilterOfText(const WhereExpr& expr, const FilterNames& names, CTraceFilter& filter,
                  WhereError& error, LookTime* time = nullptr);
