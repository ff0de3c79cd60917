# Draws one growth plot: gnuplot -e "file='FILE'" PLOT.gp growth.gp, where bench_report has written PLOT.gp.
set terminal svg size 640,400 dynamic enhanced background rgb 'white' font 'sans-serif,13'
set output file
set title title noenhanced
set logscale xy 10
set xlabel 'stores'
set ylabel 'time ('.unit.')'
set xrange [*:*]
set format x '%.0f'
set format y '%g'
set grid
set key top left
set datafile missing '?'
if (floor) {
  plot $data using 1:2 with linespoints pointtype 7 linewidth 2 linecolor rgb '#1f77b4' title 'measured', \
       $data using 1:3 with linespoints pointtype 6 linewidth 2 linecolor rgb '#999999' title 'floor'
} else {
  plot $data using 1:2 with linespoints pointtype 7 linewidth 2 linecolor rgb '#1f77b4' title 'measured'
}
