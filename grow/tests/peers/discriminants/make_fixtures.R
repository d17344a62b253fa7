# Makes the fixtures of this directory, as README.md describes them: Rscript make_fixtures.R
#
# Everything here comes from R's own functions and data, and from MASS.

library(MASS)

Number <- function(x) sprintf("%.17g", x)

lines <- character(0)
Write <- function(...) lines <<- c(lines, paste(c(...), collapse = "\t"))
Save <- function(name) {
  file <- file(name, "wb")
  on.exit(close(file))
  writeLines(lines, file)
  lines <<- character(0)
}

# --- coordinates of categories --------------------------------------------------------------------

WriteCoordinates <- function(name, table) {
  table <- unname(as.matrix(table))
  category <- row(table)[rep(seq_along(table), table)]
  class <- col(table)[rep(seq_along(table), table)]
  indicators <- outer(category, seq_len(nrow(table)), "==") + 0
  # The last indicator follows from the others.
  fit <- lda(indicators[, -nrow(table), drop = FALSE], factor(class), tol = 1e-12)
  Write("table", name, ncol(table))
  for (i in seq_len(nrow(table))) Write("weights", Number(table[i, ]))
  Write("coordinates", Number(c(fit$scaling[, 1], 0)))
}

MakeCoordinates <- function() {
  hair <- apply(HairEyeColor, c(1, 2), sum)
  WriteCoordinates("hair", hair)
  WriteCoordinates("eyes", t(hair))
  WriteCoordinates("departments", t(apply(UCBAdmissions, c(1, 3), sum)))
  WriteCoordinates("class", apply(Titanic, c(1, 4), sum))
  WriteCoordinates("cylinders by gears", table(mtcars$cyl, mtcars$gear))
  WriteCoordinates("feed by weight", table(chickwts$feed, cut(chickwts$weight, 4)))
  set.seed(11)
  for (number in 1:8) {
    rows <- 2 + number
    columns <- 2 + number %% 4
    WriteCoordinates(paste("random", number),
                     matrix(1 + rpois(rows * columns, runif(rows * columns, 1, 60)), rows))
  }
  Save("coordinates.txt")
}

# --- split points ---------------------------------------------------------------------------------

# `prior`: of the classes; only of two, since the mean and variance of classes taken together depend
# on it.
WriteSplit <- function(name, x, class, prior = NULL) {
  class <- factor(class)
  shares <- if (is.null(prior)) as.vector(table(class)) / length(x) else prior
  means <- tapply(x, class, mean)
  high <- if (length(means) == 2) {
    means == max(means)
  } else {
    kmeans(means, range(means), algorithm = "Lloyd")$cluster == 2
  }
  super <- factor(high[as.integer(class)], c(FALSE, TRUE))
  fit <- qda(matrix(x), super, prior = c(sum(shares[!high]), sum(shares[high])), method = "mle")
  Excess <- function(at) {
    diff(t(predict(fit, matrix(at), method = "plug-in")$posterior))
  }
  ends <- as.vector(fit$means)
  if (Excess(ends[1]) * Excess(ends[2]) >= 0) return(invisible())  # no root between the means
  Write("split", name)
  for (j in seq_along(means)) {
    of <- x[class == levels(class)[j]]
    Write("class", Number(c(shares[j], mean(of), mean((of - mean(of))^2))))
  }
  root <- uniroot(Excess, ends, tol = 1e-13)$root
  Write("cut", Number(root))
}

MakeSplits <- function() {
  for (variable in names(iris)[1:4]) {
    WriteSplit(paste(variable, "of three species"), iris[[variable]], iris$Species)
    for (species in levels(iris$Species)) {
      two <- iris$Species != species
      WriteSplit(paste(variable, "without", species), iris[[variable]][two],
                 droplevels(iris$Species[two]))
    }
    two <- iris$Species != "virginica"
    WriteSplit(paste(variable, "with priors"), iris[[variable]][two], droplevels(iris$Species[two]),
               c(0.3, 0.7))
  }
  WriteSplit("weight by feed", chickwts$weight, chickwts$feed)
  WriteSplit("miles per gallon by cylinders", mtcars$mpg, mtcars$cyl)
  WriteSplit("horsepower by transmission", mtcars$hp, mtcars$am)
  WriteSplit("counts by spray", InsectSprays$count, InsectSprays$spray)
  Save("splits.txt")
}

MakeCoordinates()
MakeSplits()
