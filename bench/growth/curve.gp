# One curve as a picture of three: what a message costs, what start and reload cost, what memory is taken.
# Wants: curve (its name), what (grows), folder.
set datafile separator ","
set terminal pngcairo size 1500, 460 font "sans,10"
set output folder . "/" . curve . ".png"
file = folder . "/" . curve . ".csv"
set multiplot layout 1, 3 title curve
set logscale xy
set format x "10^{%T}"
set xlabel what
set grid
set key left top
set offsets graph 0.05, graph 0.05, graph 0.1, graph 0.1
set ylabel "messages per second"
plot file using 1:3 skip 1 with linespoints linewidth 2 pointtype 7 notitle
set ylabel "ms of processor time"
plot file using 1:5 skip 1 with linespoints linewidth 2 pointtype 7 title "start", \
     file using 1:6 skip 1 with linespoints linewidth 2 pointtype 6 title "reload"
set ylabel "kilobytes"
plot file using 1:7 skip 1 with linespoints linewidth 2 pointtype 7 title "heap, configuration", \
     file using 1:8 skip 1 with linespoints linewidth 2 pointtype 6 title "resident, configuration", \
     file using 1:(($9 + $10) / 1024) skip 1 with linespoints linewidth 2 pointtype 5 title "heap, a message and its result"
unset multiplot
