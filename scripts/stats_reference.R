#!/usr/bin/env Rscript
# The reference values the statistics tests compare with: R's own analyses
# (cor.test, lm, drop1 on sum-to-zero contrasts, t.test) of data sets from
# R's datasets package, which this script also writes out as CSV files.
#
#   Rscript scripts/stats_reference.R tests/stats
#
# writes tests/stats/data/*.csv and tests/stats/reference.txt ("CASE KEY VALUE"
# lines). R comes from Debian's r-base-core (scripts/deps.sh --stats).
args <- commandArgs(trailingOnly = TRUE)
out <- if (length(args) > 0) args[1] else "tests/stats"
dir.create(file.path(out, "data"), showWarnings = FALSE, recursive = TRUE)
options(contrasts = c("contr.sum", "contr.poly"))

write.csv(mtcars, file.path(out, "data", "mtcars.csv"), row.names = FALSE)
write.csv(iris, file.path(out, "data", "iris.csv"), row.names = FALSE)
write.csv(ToothGrowth, file.path(out, "data", "ToothGrowth.csv"), row.names = FALSE)
write.csv(warpbreaks, file.path(out, "data", "warpbreaks.csv"), row.names = FALSE)
write.csv(airquality, file.path(out, "data", "airquality.csv"), row.names = FALSE)

lines <- character()
put <- function(case, key, value) {
  lines <<- c(lines, sprintf("%s %s %.17g", case, key, value))
}

descriptives <- function(case, data, vars, by = NULL) {
  groups <- if (is.null(by)) list(all = data) else split(data, data[[by]])
  g <- 0
  for (name in names(groups)) {
    d <- groups[[name]]
    for (k in seq_along(vars)) {
      x <- d[[vars[k]]]
      x <- x[!is.na(x)]
      put(case, sprintf("n.%d.%d", g, k - 1), length(x))
      put(case, sprintf("mean.%d.%d", g, k - 1), mean(x))
      put(case, sprintf("sd.%d.%d", g, k - 1), sd(x))
    }
    g <- g + 1
  }
}

correlation <- function(case, data, vars, listwise) {
  d <- data[, vars]
  if (listwise) d <- d[complete.cases(d), ]
  for (i in seq_along(vars)) {
    put(case, sprintf("mean.%d", i - 1), mean(d[[i]], na.rm = TRUE))
    put(case, sprintf("sd.%d", i - 1), sd(d[[i]], na.rm = TRUE))
    if (i > 1) for (j in 1:(i - 1)) {
      t <- cor.test(d[[i]], d[[j]])
      put(case, sprintf("r.%d.%d", i - 1, j - 1), t$estimate)
      put(case, sprintf("p.%d.%d", i - 1, j - 1), t$p.value)
      put(case, sprintf("lower.%d.%d", i - 1, j - 1), t$conf.int[1])
      put(case, sprintf("upper.%d.%d", i - 1, j - 1), t$conf.int[2])
      put(case, sprintf("n.%d.%d", i - 1, j - 1), sum(complete.cases(d[[i]], d[[j]])))
    }
  }
}

regression <- function(case, data, dv, blocks) {
  all <- unlist(blocks)
  d <- data[complete.cases(data[, c(all, dv)]), c(all, dv)]
  put(case, "n", nrow(d))
  previous <- lm(as.formula(paste(dv, "~ 1")), data = d)
  used <- character()
  for (m in seq_along(blocks)) {
    used <- c(used, blocks[[m]])
    model <- lm(as.formula(paste(dv, "~", paste(used, collapse = " + "))), data = d)
    s <- summary(model)
    co <- s$coefficients
    ci <- confint(model)
    for (k in seq_len(nrow(co))) {
      put(case, sprintf("b.%d.%d", m, k - 1), co[k, 1])
      put(case, sprintf("se.%d.%d", m, k - 1), co[k, 2])
      put(case, sprintf("t.%d.%d", m, k - 1), co[k, 3])
      put(case, sprintf("p.%d.%d", m, k - 1), co[k, 4])
      put(case, sprintf("lower.%d.%d", m, k - 1), ci[k, 1])
      put(case, sprintf("upper.%d.%d", m, k - 1), ci[k, 2])
      if (k > 1) put(case, sprintf("beta.%d.%d", m, k - 1), co[k, 1] * sd(d[[used[k - 1]]]) / sd(d[[dv]]))
    }
    f <- s$fstatistic
    put(case, sprintf("r2.%d", m), s$r.squared)
    put(case, sprintf("adjr2.%d", m), s$adj.r.squared)
    put(case, sprintf("F.%d", m), f[1])
    put(case, sprintf("pF.%d", m), pf(f[1], f[2], f[3], lower.tail = FALSE))
    change <- anova(previous, model)
    put(case, sprintf("deltaF.%d", m), change$F[2])
    put(case, sprintf("pDelta.%d", m), change$`Pr(>F)`[2])
    previous <- model
  }
}

anova3 <- function(case, data, dv, factors) {
  d <- data[complete.cases(data[, c(dv, factors)]), ]
  for (f in factors) d[[f]] <- factor(d[[f]])
  model <- lm(as.formula(paste(dv, "~", paste(factors, collapse = " * "))), data = d)
  table <- drop1(model, . ~ ., test = "F")
  terms <- rownames(table)[-1]
  mse <- deviance(model) / df.residual(model)
  put(case, "mse", mse)
  put(case, "dfError", df.residual(model))
  for (k in seq_along(terms)) {
    ss <- table[terms[k], "Sum of Sq"]
    put(case, sprintf("ss.%d", k - 1), ss)
    put(case, sprintf("F.%d", k - 1), table[terms[k], "F value"])
    put(case, sprintf("p.%d", k - 1), table[terms[k], "Pr(>F)"])
    put(case, sprintf("eta.%d", k - 1), ss / (ss + deviance(model)))
  }
}

ttest <- function(case, data, dv, by) {
  d <- data[!is.na(data[[dv]]) & !is.na(data[[by]]), ]
  g <- factor(d[[by]])
  student <- t.test(d[[dv]] ~ g, var.equal = TRUE)
  welch <- t.test(d[[dv]] ~ g, var.equal = FALSE)
  put(case, "student.t", student$statistic)
  put(case, "student.p", student$p.value)
  put(case, "welch.t", welch$statistic)
  put(case, "welch.df", welch$parameter)
  put(case, "welch.p", welch$p.value)
  x <- split(d[[dv]], g)
  pooled <- sqrt(((length(x[[1]]) - 1) * var(x[[1]]) + (length(x[[2]]) - 1) * var(x[[2]])) /
                 (length(d[[dv]]) - 2))
  put(case, "d", (mean(x[[1]]) - mean(x[[2]])) / pooled)
  for (k in 1:2) {
    put(case, sprintf("mean.%d", k - 1), mean(x[[k]]))
    put(case, sprintf("sd.%d", k - 1), sd(x[[k]]))
  }
}

descriptives("descriptives-mtcars", mtcars, c("mpg", "hp", "wt"))
descriptives("descriptives-iris", iris, c("Sepal.Length", "Petal.Width"), "Species")
descriptives("descriptives-airquality", airquality, c("Ozone", "Solar.R"), "Month")
correlation("correlation-mtcars", mtcars, c("mpg", "hp", "wt", "qsec"), TRUE)
correlation("correlation-airquality-pairwise", airquality, c("Ozone", "Solar.R", "Wind", "Temp"), FALSE)
correlation("correlation-airquality-listwise", airquality, c("Ozone", "Solar.R", "Wind", "Temp"), TRUE)
regression("regression-mtcars", mtcars, "mpg", list(c("wt", "hp"), c("qsec")))
regression("regression-iris", iris, "Sepal.Length", list(c("Sepal.Width"), c("Petal.Length", "Petal.Width")))
regression("regression-airquality", airquality, "Ozone", list(c("Temp", "Wind", "Solar.R")))
anova3("anova-toothgrowth", ToothGrowth, "len", c("supp", "dose"))
anova3("anova-warpbreaks", warpbreaks, "breaks", c("wool", "tension"))
anova3("anova-mtcars", mtcars, "mpg", c("cyl", "am"))
ttest("ttest-toothgrowth", ToothGrowth, "len", "supp")
ttest("ttest-mtcars", mtcars, "mpg", "am")

writeLines(lines, file.path(out, "reference.txt"))
