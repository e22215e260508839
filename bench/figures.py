"""Medians, ratios and tables."""

import statistics


def quartiles(values):
    """The lower and upper quartile; of one value, that value twice."""
    if len(values) == 1:
        return values[0], values[0]
    lower, _, upper = statistics.quantiles(values, n=4, method="inclusive")
    return lower, upper


def ratio(ours, theirs):
    """How many times as much as `theirs` ours is: the median over the rounds, each of which measured
    one after the other, so that what else the machine did meanwhile struck both."""
    if len(ours) != len(theirs):
        raise ValueError("the rounds do not match")
    return statistics.median(own / other for own, other in zip(ours, theirs))


def median_and_spread(values, digits=1):
    """As text: the median, and the quartiles in brackets."""
    lower, upper = quartiles(values)
    return f"{statistics.median(values):.{digits}f} [{lower:.{digits}f} {upper:.{digits}f}]"


def table(headings, rows):
    """Markdown, in columns that line up: the first to the left, the others to the right."""
    for row in rows:
        if len(row) != len(headings):
            raise ValueError(f"{len(row)} cells for {len(headings)} columns: {row}")
    widths = [max(len(row[column]) for row in [headings, *rows]) for column in range(len(headings))]

    def line(cells):
        padded = [cell.ljust(width) if column == 0 else cell.rjust(width)
                  for column, (cell, width) in enumerate(zip(cells, widths))]
        return "| " + " | ".join(padded) + " |"

    rule = "|" + "|".join("-" * (width + 2) if column == 0 else "-" * (width + 1) + ":"
                          for column, width in enumerate(widths)) + "|"
    return "\n".join([line(headings), rule, *(line(row) for row in rows)])
