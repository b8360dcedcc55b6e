// What assistive technology reads of the overview: a chart whose description says what is in it.
//
// Threads  Interface thread.
#pragma once

void DescribeOverviews();
